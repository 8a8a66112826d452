// UTF-16 and Latin-1 of the file formats, from and to UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace korvex {

// UTF-16 writes a character above U+FFFF as two units, a high and a low surrogate.
constexpr bool IsHighSurrogate(std::uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsLowSurrogate(std::uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}
constexpr char32_t JoinSurrogates(std::uint32_t high, std::uint32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// The functions that make UTF-8 write into memory that the caller has reserved, and return the end
// of what they wrote. A unit or a single-byte character takes at most this many bytes.
inline constexpr std::size_t kUtf8PerUnit = 3;

// Characters U+0000 to U+00FF, one byte each.
char* Latin1ToUtf8(const std::byte* in, std::size_t count, char* out);

// Takes UTF-16LE piece by piece: a surrogate pair may be cut between two pieces. A lone surrogate
// becomes U+FFFD. Each call, Finish included, writes at most kUtf8PerUnit bytes for every unit
// taken so far and not yet written.
class Utf16Decoder {
 public:
  char* Append(const std::byte* in, std::size_t count, char* out);
  char* Finish(char* out);

 private:
  char16_t high_ = 0;  // a high surrogate that waits for its low one
};

// Replaces the content of `out` and reuses its memory. Each byte that is not UTF-8 becomes U+FFFD.
void ToUtf16(std::string_view utf8, std::u16string& out);

}  // namespace korvex
