#include "spreadsheet/xlsx/xlsx_text.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "spreadsheet/bytes/unicode.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::size_t kEscapeSize = 7;  // "_x000D_"

// The UTF-16 unit that an escape at the front of `text` stands for: four hexadecimal digits. None
// for what only looks like one, which is text as it stands.
std::optional<std::uint16_t> EscapedUnit(std::string_view text) {
  if (text.size() < kEscapeSize || !text.starts_with("_x") || text[6] != '_') return {};
  std::uint16_t unit = 0;
  const char* const end = text.data() + 6;
  if (std::from_chars(text.data() + 2, end, unit, 16).ptr != end) return {};
  return unit;
}

// Removes the escape of `unit` from the front of `text`, or two that are a surrogate pair, and
// returns their character.
char32_t TakeEscaped(std::string_view& text, std::uint16_t unit) {
  text.remove_prefix(kEscapeSize);
  if (!IsHighSurrogate(unit)) return IsLowSurrogate(unit) ? kReplacementCharacter : unit;
  const std::optional<std::uint16_t> low = EscapedUnit(text);
  if (!low || !IsLowSurrogate(*low)) return kReplacementCharacter;
  text.remove_prefix(kEscapeSize);
  return JoinSurrogates(unit, *low);
}

}  // namespace

void AppendEscapedText(std::string_view text, TextArena& out) {
  char character[kLongestUtf8];
  while (!text.empty()) {
    const std::size_t escape = text.find("_x");
    out.Append(text.substr(0, escape));
    if (escape == std::string_view::npos) return;
    text.remove_prefix(escape);
    if (const std::optional<std::uint16_t> unit = EscapedUnit(text)) {
      const char* const end = EncodeUtf8(TakeEscaped(text, *unit), character);
      out.Append({character, end});
    } else {
      out.Append(text.substr(0, 1));
      text.remove_prefix(1);
    }
  }
}

// Enters runs for the text in them. Whatever else is in a text (fonts, phonetic runs) is skipped.
bool XlsxTextReader::Start(const XmlElement& element) {
  if (is_in_text_) return false;
  if (element.Is(xlsx::kMain, "r")) return true;
  if (!element.Is(xlsx::kMain, "t")) return false;
  is_in_text_ = true;
  text_.Clear();
  return true;
}

void XlsxTextReader::End(const XmlName& name, TextArena& out) {
  if (name.local != "t") return;
  is_in_text_ = false;
  AppendEscapedText(text_.View(), out);
}

}  // namespace korvex
