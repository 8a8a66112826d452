#include "text/utf8.h"

namespace korvex {

Utf8Character FirstUtf8(std::string_view text) {
  constexpr Utf8Character kInvalid = {kInvalidByte, 1};
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};

  // Below C2 are continuation bytes and the starts of overlong forms; nothing beyond F4 is Unicode.
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || length > text.size()) return kInvalid;
  char32_t code = lead & (0x7Fu >> length);  // without the bits that tell the length
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return kInvalid;
    code = code << 6 | (byte(i) & 0x3Fu);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (overlong || surrogate || code > 0x10FFFF) return kInvalid;
  return {code, length};
}

void AppendUtf8(char32_t code, std::string& out) {
  char bytes[kLongestUtf8];
  out.append(bytes, EncodeUtf8(code, bytes));
}

std::size_t Utf16Length(std::string_view text) {
  std::size_t units = 0;
  while (!text.empty()) {
    const std::size_t length = FirstUtf8(text).length;
    units += length == 4 ? 2 : 1;
    text.remove_prefix(length);
  }
  return units;
}

std::string Shortened(std::string_view text, std::size_t longest) {
  if (text.size() <= longest) return std::string(text);
  while (longest > 0 && (static_cast<unsigned char>(text[longest]) & 0xC0) == 0x80) --longest;
  return std::string(text.substr(0, longest)) + "...";
}

}  // namespace korvex
