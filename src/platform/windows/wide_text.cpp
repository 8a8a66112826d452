#include "platform/windows/wide_text.h"

#include "platform/windows/windows_api.h"

#include <cstddef>

#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::size_t kHalfLength = 3;  // bytes of half a surrogate pair

bool IsHigh(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLow(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

wchar_t Unit(char32_t code) {
  return static_cast<wchar_t>(code);
}

// The half of a surrogate pair that a text begins with, or 0.
char32_t FirstHalf(std::string_view text) {
  if (text.size() < kHalfLength) return 0;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) != 0xED || byte(1) < 0xA0 || byte(1) > 0xBF || (byte(2) & 0xC0) != 0x80) return 0;
  return 0xD000u | (byte(1) & 0x3Fu) << 6 | (byte(2) & 0x3Fu);
}

}  // namespace

std::wstring ToWide(std::string_view utf8) {
  std::wstring wide;
  wide.reserve(utf8.size());
  while (!utf8.empty()) {
    const auto [code, length] = FirstUtf8(utf8);
    std::size_t taken = length;
    if (code == kInvalidByte) {
      const char32_t half = FirstHalf(utf8);
      wide += Unit(half ? half : kReplacementCharacter);
      if (half) taken = kHalfLength;
    } else if (code >= 0x10000) {
      wide += Unit(0xD800 + ((code - 0x10000) >> 10));
      wide += Unit(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      wide += Unit(code);
    }
    utf8.remove_prefix(taken);
  }
  return wide;
}

std::string FromWide(std::wstring_view wide) {
  std::string utf8;
  utf8.reserve(wide.size());
  for (std::size_t i = 0; i < wide.size(); ++i) {
    char32_t code = wide[i];
    // A half without its other half goes on as it is, for names of files that hold one.
    if (IsHigh(code) && i + 1 < wide.size() && IsLow(wide[i + 1])) {
      code = 0x10000 + ((code - 0xD800) << 10) + (char32_t{wide[++i]} - 0xDC00);
    }
    AppendUtf8(code, utf8);
  }
  return utf8;
}

std::string ToSystemCodePage(std::string_view utf8) {
  const std::wstring wide = ToWide(utf8);
  const auto length = static_cast<int>(wide.size());
  const auto convert = [&](char* bytes, int size) {
    return WideCharToMultiByte(CP_ACP, 0, wide.data(), length, bytes, size, nullptr, nullptr);
  };
  std::string bytes(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  convert(bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

}  // namespace korvex
