#include "console/console_line.h"

#include <algorithm>
#include <cstddef>

#include "text/utf8.h"

namespace korvex {
namespace {

// A terminal shows "^C" behind the drawn line when Ctrl-C is pressed.
constexpr std::size_t kEcho = 2;

// DEL and what a terminal may take for an escape sequence of eight bits, too.
bool IsC0OrC1Control(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

std::string Printable(std::string_view text, bool keep_line_ends) {
  std::string result;
  while (!text.empty()) {
    const Utf8Character character = FirstUtf8(text);
    const std::string_view bytes = text.substr(0, character.length);
    text.remove_prefix(character.length);
    // CR LF is one line end.
    if (bytes == "\r" && text.starts_with('\n')) continue;
    if (keep_line_ends && (bytes == "\r" || bytes == "\n")) {
      result += '\n';
    } else if (bytes == "\r" || bytes == "\n" || bytes == "\t") {
      result += ' ';
    } else {
      result += IsC0OrC1Control(character.code) ? "?" : bytes;
    }
  }
  return result;
}

std::size_t Length(std::string_view text) {
  std::size_t length = 0;
  for (; !text.empty(); text.remove_prefix(FirstUtf8(text).length)) ++length;
  return length;
}

std::string_view Cut(std::string_view text, std::size_t length) {
  std::size_t size = 0;
  for (; length > 0 && size < text.size(); --length) size += FirstUtf8(text.substr(size)).length;
  return text.substr(0, size);
}

}  // namespace

void ConsoleLine::Draw(std::string_view text) {
  // The last column stays free: some terminals begin a new line once it is filled.
  const auto width = static_cast<std::size_t>(std::max(terminal_.Columns() - 1, 1));
  const std::string printable = Printable(text, false);
  const std::string line(Cut(printable, width));
  if (line == drawn_) return;
  const std::size_t length = Length(line);
  const std::size_t former = drawn_.empty() ? 0 : std::min(Length(drawn_) + kEcho, width);
  // Blanks cover what the former text leaves on the right.
  const std::string rest(former > length ? former - length : 0, ' ');
  terminal_.WriteError("\r" + line + rest);
  drawn_ = line;
}

void ConsoleLine::Clear() {
  if (drawn_.empty()) return;
  Draw("");
  terminal_.WriteError("\r");
}

void ConsoleLine::WriteLine(std::string_view text) {
  Write(std::string(text) + "\n");
}

void ConsoleLine::Write(std::string_view text) {
  Clear();
  terminal_.WriteError(Printable(text, true));
}

}  // namespace korvex
