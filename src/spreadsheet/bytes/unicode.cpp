#include "spreadsheet/bytes/unicode.h"

#include <cstring>

#include "spreadsheet/bytes/little_endian.h"
#include "text/utf8.h"

namespace korvex {

char* Latin1ToUtf8(const std::byte* in, std::size_t count, char* out) {
  const std::byte* const end = in + count;
  while (in != end) {
    // Nearly all texts are ASCII: eight characters at a time.
    while (end - in >= 8 && (LoadU64(in) & 0x8080808080808080) == 0) {
      std::memcpy(out, in, 8);
      in += 8;
      out += 8;
    }
    if (in != end) out = EncodeUtf8(LoadU8(in++), out);
  }
  return out;
}

char* Utf16Decoder::Append(const std::byte* in, std::size_t count, char* out) {
  for (; count > 0; --count, in += 2) {
    const char16_t unit = LoadU16(in);
    if (high_ != 0) {
      const char16_t high = high_;
      high_ = 0;
      if (IsLowSurrogate(unit)) {
        out = EncodeUtf8(JoinSurrogates(high, unit), out);
        continue;
      }
      // The high surrogate was alone; this unit is a character of its own.
      out = EncodeUtf8(kReplacementCharacter, out);
    }
    if (unit < 0x80) {
      *out++ = static_cast<char>(unit);
    } else if (IsHighSurrogate(unit)) {
      high_ = unit;
    } else {
      out = EncodeUtf8(IsLowSurrogate(unit) ? kReplacementCharacter : char32_t{unit}, out);
    }
  }
  return out;
}

// A high surrogate at the end of a text has lost its other half.
char* Utf16Decoder::Finish(char* out) {
  if (high_ == 0) return out;
  high_ = 0;
  return EncodeUtf8(kReplacementCharacter, out);
}

// Above U+FFFF the code less 0x10000 has 20 bits: ten go into each half of the pair.
void ToUtf16(std::string_view utf8, std::u16string& out) {
  constexpr char32_t kFirstPair = 0x10000;
  out.clear();
  while (!utf8.empty()) {
    const Utf8Character first = FirstUtf8(utf8);
    utf8.remove_prefix(first.length);
    const char32_t code = first.code == kInvalidByte ? kReplacementCharacter : first.code;
    if (code < kFirstPair) {
      out.push_back(static_cast<char16_t>(code));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((code - kFirstPair) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    }
  }
}

}  // namespace korvex
