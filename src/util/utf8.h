// UTF-8, one character at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex {

// A byte that does not belong to valid UTF-8 is a character of its own: code kInvalidByte,
// length 1.
inline constexpr char32_t kInvalidByte = 0xFFFFFFFF;

struct Utf8Character {
  char32_t code;
  std::size_t length;  // in bytes
};

// The first character of a text that is not empty. Overlong forms and surrogates are invalid.
Utf8Character FirstUtf8(std::string_view text);

// `code` is a Unicode scalar value.
void AppendUtf8(char32_t code, std::string& out);

}  // namespace korvex
