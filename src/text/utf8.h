// UTF-8, one character at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex {

// A byte that does not belong to valid UTF-8 is a character of its own: code kInvalidByte,
// length 1.
inline constexpr char32_t kInvalidByte = 0xFFFFFFFF;

// What a text shows where a character could not be read.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct Utf8Character {
  char32_t code;
  std::size_t length;  // in bytes
};

// The first character of a text that is not empty. Overlong forms and surrogates are invalid.
Utf8Character FirstUtf8(std::string_view text);

// The text, or its first characters within that many bytes and "...".
std::string Shortened(std::string_view text, std::size_t longest);

// Writes a character, at most kLongestUtf8 bytes, and returns the end of it. `code` is a Unicode
// scalar value.
inline constexpr std::size_t kLongestUtf8 = 4;
inline char* EncodeUtf8(char32_t code, char* out) {
  if (code < 0x80) {
    *out++ = static_cast<char>(code);
  } else if (code < 0x800) {
    *out++ = static_cast<char>(0xC0 | code >> 6);
    *out++ = static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    *out++ = static_cast<char>(0xE0 | code >> 12);
    *out++ = static_cast<char>(0x80 | (code >> 6 & 0x3F));
    *out++ = static_cast<char>(0x80 | (code & 0x3F));
  } else {
    *out++ = static_cast<char>(0xF0 | code >> 18);
    *out++ = static_cast<char>(0x80 | (code >> 12 & 0x3F));
    *out++ = static_cast<char>(0x80 | (code >> 6 & 0x3F));
    *out++ = static_cast<char>(0x80 | (code & 0x3F));
  }
  return out;
}
void AppendUtf8(char32_t code, std::string& out);

// The number of UTF-16 units that a text takes; a byte that is no UTF-8 counts as one.
std::size_t Utf16Length(std::string_view text);

}  // namespace korvex
