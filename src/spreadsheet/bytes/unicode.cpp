#include "spreadsheet/bytes/unicode.h"

#include <cstring>

#include "spreadsheet/bytes/little_endian.h"
#include "text/utf8.h"

namespace korvex {

char* Latin1ToUtf8(const std::byte* in, std::size_t count, char* out) {
  const std::byte* const end = in + count;
  while (in != end) {
    // Nearly every text is ASCII: eight characters at a time.
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
      if (unit >= 0xDC00 && unit < 0xE000) {
        out = EncodeUtf8(0x10000 + ((high - 0xD800u) << 10) + (unit - 0xDC00u), out);
        continue;
      }
      out = EncodeUtf8(kReplacementCharacter, out);
    }
    if (unit < 0x80) {
      *out++ = static_cast<char>(unit);
    } else if (unit >= 0xD800 && unit < 0xDC00) {
      high_ = unit;
    } else if (unit >= 0xDC00 && unit < 0xE000) {
      out = EncodeUtf8(kReplacementCharacter, out);
    } else {
      out = EncodeUtf8(unit, out);
    }
  }
  return out;
}

char* Utf16Decoder::Finish(char* out) {
  if (high_ == 0) return out;
  high_ = 0;
  return EncodeUtf8(kReplacementCharacter, out);
}

}  // namespace korvex
