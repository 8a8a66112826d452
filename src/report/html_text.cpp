#include "report/html_text.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

// Which characters HTML refuses although they are valid UTF-8.
bool IsRefused(char32_t code) {
  // Controls, U+FFFE and U+FFFF of every plane and U+FDD0 to U+FDEF: a page that holds them is not
  // valid HTML, even when they are escaped.
  if (code == U'\t' || code == U'\n' || code == U'\r') return false;
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0xFDD0 && code <= 0xFDEF) ||
         (code & 0xFFFE) == 0xFFFE || code == kInvalidByte;
}

std::string InDigits(double number, int digits) {
  // Never locale-dependent: figures look the same wherever the page is made.
  char buffer[40];
  const auto [end, error] =
      std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, digits);
  std::string text(buffer, error == std::errc() ? end : buffer);
  // Negative zero is no negative number to a reader.
  return text == "-0" ? "0" : text;
}

}  // namespace

std::string Escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character character = FirstUtf8(text);
    if (IsRefused(character.code)) {
      AppendUtf8(kReplacementCharacter, out);
    } else if (character.code == U'&') {
      out += "&amp;";
    } else if (character.code == U'<') {
      out += "&lt;";
    } else if (character.code == U'>') {
      out += "&gt;";
    } else if (character.code == U'"') {
      // Attributes are in double quotes throughout, so that the single one may stay.
      out += "&quot;";
    } else {
      out += text.substr(0, character.length);
    }
    text.remove_prefix(character.length);
  }
  return out;
}

std::string ShownNumber(double number) {
  return InDigits(number, 6);
}

std::string ShownFigure(std::optional<double> figure) {
  return figure ? InDigits(*figure, 4) : "–";
}

std::string ShownPercent(double fraction) {
  const double percent = fraction * 100;
  // With three digits, what is larger would turn into powers of ten: "1.23e+03".
  return InDigits(percent, percent < 1000 ? 3 : 6) + " %";
}

std::string LastName(std::string_view path) {
  const char separator = Platform().files->Separator();
  while (path.size() > 1 && path.ends_with(separator)) path.remove_suffix(1);
  return std::string(path.substr(path.rfind(separator) + 1));
}

}  // namespace korvex
