// UTF-16 and Latin-1 to UTF-8. Output goes to memory that the caller has reserved; every function
// returns the end of what it wrote.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvex {

// Room that one UTF-16 unit or single-byte character can need.
inline constexpr std::size_t kUtf8PerUnit = 3;

// Characters U+0000 to U+00FF, one byte each.
char* Latin1ToUtf8(const std::byte* in, std::size_t count, char* out);

// Takes UTF-16LE piece by piece: a surrogate pair may be cut between two pieces. A lone surrogate
// becomes U+FFFD. Each call, Finish included, writes at most kUtf8PerUnit bytes per unit taken so
// far and not yet written.
class Utf16Decoder {
 public:
  char* Append(const std::byte* in, std::size_t count, char* out);
  char* Finish(char* out);

 private:
  char16_t high_ = 0;  // a high surrogate that waits for its partner
};

}  // namespace korvex
