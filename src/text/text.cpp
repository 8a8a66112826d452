#include "text/text.h"

#include <algorithm>
#include <iterator>

#include "text/case_ranges.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

constexpr char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

// Every byte of a character beyond ASCII is junk by itself, so that whole characters go.
constexpr bool IsJunk(char c) {
  return c <= ' ' || c == '\x7F' || !IsAscii(c);
}

// Finds the only range that can hold the letter: the first that does not end before it.
char32_t UpperLetter(char32_t code) {
  const CaseRange* range = std::lower_bound(
      std::begin(kCaseRanges), std::end(kCaseRanges), code,
      [](const CaseRange& candidate, char32_t letter) { return candidate.last < letter; });
  if (range == std::end(kCaseRanges) || code < range->first) return code;
  if ((code - range->first) % range->stride != 0) return code;
  return static_cast<char32_t>(static_cast<std::int32_t>(code) + range->delta);
}

void AppendUpperCaseBeyondAscii(std::string_view text, std::string& out) {
  while (!text.empty()) {
    const Utf8Character character = FirstUtf8(text);
    if (character.code < 0x80) {
      out.push_back(UpperAscii(text.front()));
    } else if (character.code == kInvalidByte) {
      out.push_back(text.front());
    } else {
      AppendUtf8(UpperLetter(character.code), out);
    }
    text.remove_prefix(character.length);
  }
}

}  // namespace

std::string UpperCase(std::string_view text) {
  std::string upper;
  AppendUpperCase(text, upper);
  return upper;
}

void AppendUpperCase(std::string_view text, std::string& out) {
  const std::size_t start = out.size();
  out.append(text);
  // No branch in the loop: the compiler turns it into vector instructions, and nearly every key is
  // ASCII throughout.
  unsigned char all_bits = 0;
  char* const end = out.data() + out.size();
  for (char* c = out.data() + start; c != end; ++c) {
    all_bits = static_cast<unsigned char>(all_bits | static_cast<unsigned char>(*c));
    *c = UpperAscii(*c);
  }
  if (all_bits < 0x80) return;
  out.resize(start);
  AppendUpperCaseBeyondAscii(text, out);
}

// Mostly the bytes are equal already, which is quick to see.
bool EqualText(std::string_view a, std::string_view b) {
  return a == b || CompareText(a, b) == 0;
}

int CompareText(std::string_view a, std::string_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    // A character beyond ASCII has several bytes, and its upper case may have another number of
    // them: from here on the texts are compared as whole upper-cased texts.
    if (!IsAscii(a[i]) || !IsAscii(b[i]))
      return UpperCase(a.substr(i)).compare(UpperCase(b.substr(i)));
    const int difference = UpperAscii(a[i]) - UpperAscii(b[i]);
    if (difference != 0) return difference;
  }
  return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

std::string_view TrimBlanks(std::string_view text, std::string_view blanks) {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view TrimAllBlanks(std::string_view text) {
  const auto is_plain = [](char c) { return c > ' '; };
  if (!text.empty() && is_plain(text.front()) && is_plain(text.back())) return text;
  for (;;) {
    text = TrimBlanks(text, " \t");
    if (text.starts_with(kNonBreakingBlank)) {
      text.remove_prefix(kNonBreakingBlank.size());
    } else if (text.ends_with(kNonBreakingBlank)) {
      text.remove_suffix(kNonBreakingBlank.size());
    } else {
      return text;
    }
  }
}

std::string clsStrings::TrimJunk(std::string_view string) const {
  while (!string.empty() && IsJunk(string.front())) string.remove_prefix(1);
  while (!string.empty() && IsJunk(string.back())) string.remove_suffix(1);
  return std::string(string);
}

std::vector<std::string> Split(std::string_view text, std::string_view separator) {
  std::vector<std::string> fields;
  if (text.empty()) return fields;
  std::size_t field_start = 0;
  std::size_t i = 0;
  while (!separator.empty() && i + separator.size() <= text.size()) {
    if (EqualText(text.substr(i, separator.size()), separator)) {
      fields.emplace_back(text.substr(field_start, i - field_start));
      i += separator.size();
      field_start = i;
    } else {
      ++i;
    }
  }
  fields.emplace_back(text.substr(field_start));
  return fields;
}

std::string Join(const std::vector<std::string>& fields, std::string_view separator) {
  std::string joined;
  for (const std::string& field : fields) {
    if (&field != &fields.front()) joined += separator;
    joined += field;
  }
  return joined;
}

std::string GroupedDigits(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t end = digits.size(); end > 3; end -= 3) digits.insert(end - 3, 1, ',');
  return digits;
}

std::string Counted(std::size_t count, std::string_view noun) {
  return GroupedDigits(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace korvex
