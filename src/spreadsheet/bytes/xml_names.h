// The characters of XML documents.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace korvex {

// What a byte may be in a document, one bit each. A byte of a character that is not ASCII has none
// of them, and neither has a byte that no document may hold: both are looked at one by one.
enum XmlByte : std::uint8_t {
  kXmlNameStart = 1,  // ":" is not of a name: it stands between prefix and local name
  kXmlNamePart = 2,
  kXmlBlank = 4,
  kXmlPlainText = 8,    // stands for itself between tags
  kXmlPlainCdata = 16,  // the same in a CDATA section
  kXmlPlainValue = 32,  // the same in the value of an attribute
};

inline constexpr auto kXmlBytes = [] {
  std::array<std::uint8_t, 256> bytes{};
  for (unsigned byte = 0x20; byte < 0x80; ++byte) {
    const bool is_letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    const bool is_digit = byte >= '0' && byte <= '9';
    std::uint8_t uses = 0;
    if (is_letter || byte == '_') uses |= kXmlNameStart;
    if (is_letter || is_digit || byte == '_' || byte == '-' || byte == '.') uses |= kXmlNamePart;
    const bool is_markup = byte == '<' || byte == '&';
    if (byte != ']') uses |= is_markup ? kXmlPlainCdata : kXmlPlainCdata | kXmlPlainText;
    if (!is_markup && byte != '"' && byte != '\'') uses |= kXmlPlainValue;
    bytes[byte] = uses;
  }
  for (const unsigned blank : {0x20u, 0x09u, 0x0Au, 0x0Du}) bytes[blank] |= kXmlBlank;
  for (const unsigned plain : {0x09u, 0x0Au}) bytes[plain] |= kXmlPlainText | kXmlPlainCdata;
  return bytes;
}();

inline bool IsXmlByte(char byte, XmlByte use) {
  return (kXmlBytes[static_cast<unsigned char>(byte)] & use) != 0;
}

// Takes blanks off both ends.
inline std::string_view TrimXmlBlanks(std::string_view text) {
  while (!text.empty() && IsXmlByte(text.front(), kXmlBlank)) text.remove_prefix(1);
  while (!text.empty() && IsXmlByte(text.back(), kXmlBlank)) text.remove_suffix(1);
  return text;
}

// Of characters that are not ASCII. They are those of XML 1.0 up to its fourth edition.
bool IsXmlNameStart(char32_t code);
bool IsXmlNamePart(char32_t code);

}  // namespace korvex
