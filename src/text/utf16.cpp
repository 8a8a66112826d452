#include "text/utf16.h"

#include "text/utf8.h"

namespace korvex {

namespace {

constexpr char32_t kFirstPair = 0x10000;

// The character at the front of `text`, which it takes off.
char32_t TakeCharacter(std::string_view& text) {
  const Utf8Character first = FirstUtf8(text);
  text.remove_prefix(first.length);
  return first.code == kInvalidByte ? kReplacementCharacter : first.code;
}

}  // namespace

void ToUtf16(std::string_view utf8, std::u16string& out) {
  out.clear();
  while (!utf8.empty()) {
    const char32_t code = TakeCharacter(utf8);
    if (code < kFirstPair) {
      out.push_back(static_cast<char16_t>(code));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((code - kFirstPair) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    }
  }
}

}  // namespace korvex
