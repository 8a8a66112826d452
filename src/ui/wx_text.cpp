#include "ui/wx_text.h"

#include "text/utf8.h"

namespace korvex {

wxString ToWx(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character character = FirstUtf8(text);
    AppendUtf8(character.code == kInvalidByte ? kReplacementCharacter : character.code, shown);
    text.remove_prefix(character.length);
  }
  return wxString::FromUTF8(shown.data(), shown.size());
}

std::string FromWx(const wxString& text) {
  const wxScopedCharBuffer bytes = text.utf8_str();
  return std::string(bytes.data(), bytes.length());
}

}  // namespace korvex
