#include "platform/shown_text.h"

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace korvex {
namespace {

unsigned ByteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
}

struct Control {
  unsigned code = 0;
  std::size_t length = 0;  // in bytes; 0 when the text does not begin with a control character
};

// All control characters take one, two or three bytes, and each length has few leading bytes.
Control FirstControl(std::string_view text) {
  const unsigned first = ByteAt(text, 0);
  const unsigned second = ByteAt(text, 1);
  if (first < 0x20 || first == 0x7F) return {first, 1};
  if (first == 0xC2 && second >= 0x80 && second < 0xA0) return {second, 2};
  if (first != 0xE2 || (second != 0x80 && second != 0x81)) return {};
  const unsigned code = 0x2000 + ((second & 0x3Fu) << 6) + (ByteAt(text, 2) & 0x3Fu);
  const bool is_control = (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  // Line and paragraph separators (2028, 2029) and what turns the direction of writing.
  return is_control ? Control{code, 3} : Control{};
}

std::string Escape(unsigned code) {
  switch (code) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  char text[8];
  std::snprintf(text, sizeof text, code < 0x80 ? "\\x%02X" : "\\u%04X", code);
  return text;
}

}  // namespace

std::string Shown(std::string text) {
  for (std::size_t at = 0; at < text.size();) {
    const Control control = FirstControl(std::string_view(text).substr(at));
    if (control.length == 0) {
      ++at;
      continue;
    }
    const std::string escape = Escape(control.code);
    text.replace(at, control.length, escape);
    at += escape.size();
  }
  return text;
}

}  // namespace korvex
