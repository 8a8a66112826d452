// Text as the program compares and cuts it. All texts are UTF-8; bytes that are not valid UTF-8
// stand for themselves.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

// The line break of messages, of the error log and of .csv and .tsv files, on every platform.
inline constexpr char kLineBreak[] = "\r\n";

// Upper case by simple one-to-one mappings of Latin, Greek and Cyrillic letters.
std::string UpperCase(std::string_view text);
void AppendUpperCase(std::string_view text, std::string& out);

// Comparison that ignores letter case: compares the upper-cased texts byte by byte.
bool EqualText(std::string_view a, std::string_view b);
int CompareText(std::string_view a, std::string_view b);
// Whether one of the texts is equal to `text`. `projection` makes a text of an element, as
// `&KeyedColumn::name` does.
template <class Texts, class Projection = std::identity>
bool ContainsText(const Texts& texts, std::string_view text, Projection projection = {}) {
  return std::ranges::any_of(
      texts, [&](std::string_view each) { return EqualText(each, text); }, projection);
}

constexpr bool IsAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

class clsStrings {
 public:
  // Takes everything outside printable ASCII, blanks and accented letters included, off both ends.
  std::string TrimJunk(std::string_view string) const;
};

// Takes blanks (U+0020 alone, unless others are named) off both ends.
std::string_view TrimBlanks(std::string_view text, std::string_view blanks = " ");

// U+00A0, which people cannot tell from a blank.
inline constexpr std::string_view kNonBreakingBlank = "\xC2\xA0";
// In bytes, of the plain or non-breaking blank at the beginning of the text; 0 for none.
constexpr std::size_t BlankLength(std::string_view text) {
  if (text.starts_with(' ')) return 1;
  return text.starts_with(kNonBreakingBlank) ? kNonBreakingBlank.size() : 0;
}
// Takes blanks, non-breaking ones and tabs off both ends.
std::string_view TrimAllBlanks(std::string_view text);

// Splits at every occurrence of a separator, whose letter case is ignored when it has any. An empty
// text splits into no fields at all.
std::vector<std::string> Split(std::string_view text, std::string_view separator);
std::string Join(const std::vector<std::string>& fields, std::string_view separator);

// A count as people read it: "12,288".
std::string GroupedDigits(std::uint64_t number);
// "1 key", "1,024 keys".
std::string Counted(std::size_t count, std::string_view noun);

}  // namespace korvex
