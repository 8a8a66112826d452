#include "util/code_page.h"

#include <algorithm>
#include <iterator>

#include "util/utf8.h"

namespace korvex {
namespace {

// What the bytes 0x80 to 0x9F stand for; 0 where the code page has nothing. All others stand for
// the code point of the same number.
constexpr char16_t kHighControls[] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char CodePageByte(char32_t code) {
  if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) return static_cast<char>(code);
  const auto* found = std::find(std::begin(kHighControls), std::end(kHighControls), code);
  if (found == std::end(kHighControls)) return '?';
  return static_cast<char>(0x80 + (found - std::begin(kHighControls)));
}

}  // namespace

std::string ToCodePage1252(std::string_view utf8) {
  std::string bytes;
  while (!utf8.empty()) {
    const Utf8Character character = FirstUtf8(utf8);
    bytes.push_back(CodePageByte(character.code));
    utf8.remove_prefix(character.length);
  }
  return bytes;
}

std::string Utf8FromCodePage1252(unsigned char byte) {
  char32_t code = byte;
  if (byte >= 0x80 && byte <= 0x9F && kHighControls[byte - 0x80] != 0)
    code = kHighControls[byte - 0x80];
  std::string character;
  AppendUtf8(code, character);
  return character;
}

}  // namespace korvex
