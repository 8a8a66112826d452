// Text as the program compares and cuts it. All texts are UTF-8; bytes that are not valid UTF-8
// stand for themselves.
#pragma once

#include <cstdint>
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

class clsStrings {
 public:
  // Takes everything outside printable ASCII, blanks and accented letters included, off both ends.
  std::string TrimJunk(std::string_view string) const;
};

// Takes blanks (U+0020 alone, unless others are named) off both ends.
std::string_view TrimBlanks(std::string_view text, std::string_view blanks = " ");

// Splits at every occurrence of a separator, whose letter case is ignored when it has any. An empty
// text splits into no fields at all.
std::vector<std::string> Split(std::string_view text, std::string_view separator);
std::string Join(const std::vector<std::string>& fields, std::string_view separator);

// A count as people read it: "12,288".
std::string GroupedDigits(std::uint64_t number);
// "1 key", "1,024 keys".
std::string Counted(std::size_t count, std::string_view noun);

}  // namespace korvex
