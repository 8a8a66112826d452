#include "settings/ini_document.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/shown_text.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view Trim(std::string_view text) {
  return TrimBlanks(text, " \t\r\n");
}

std::string Quoted(std::string_view text, std::string_view special) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string result = "\"";
  for (const char c : text) {
    if (IsAsciiControl(c) || special.find(c) != std::string_view::npos) {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    } else {
      result += c;
    }
  }
  return result + "\"";
}

bool NeedsQuotes(std::string_view text) {
  return Trim(text) != text || text.starts_with('"') || std::ranges::any_of(text, IsAsciiControl);
}

// "%" is only special within quotation marks, so it is encoded only there.
std::string EncodedValue(std::string_view value) {
  return NeedsQuotes(value) ? Quoted(value, "%") : std::string(value);
}

std::string EncodedName(std::string_view name) {
  // What would be read as something else without quotation marks: a comment, a section, the end of
  // the name or of the section.
  const bool plain = !name.empty() && !NeedsQuotes(name) && !name.starts_with(kByteOrderMark) &&
                     name.find_first_of("=]") == std::string_view::npos &&
                     std::string_view(";#[").find(name.front()) == std::string_view::npos;
  return plain ? std::string(name) : Quoted(name, "%=");
}

std::string Decoded(std::string_view text) {
  text = Trim(text);
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::string(text);
  text = text.substr(1, text.size() - 2);
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned byte = 0;
    const char* digits = text.data() + i + 1;
    if (text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      result += static_cast<char>(byte);
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace

IniDocument::IniDocument(std::string_view text) {
  std::string section;
  while (!text.empty()) {
    // Each line keeps its own line end, so that a file with mixed ones comes out as it was.
    const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
    lines_.push_back(Parse(std::string(text.substr(0, size)), section));
    section = lines_.back().section;
    text.remove_prefix(size);
  }
}

IniDocument::Line IniDocument::Parse(std::string_view text, const std::string& section) {
  Line line;
  line.text = text;
  line.section = section;
  // Only the first line can have one. Editors of Windows write it; it is no part of the name.
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  text = Trim(text);
  if (text.empty() || text.front() == ';' || text.front() == '#') return line;
  if (text.front() == '[' && text.back() == ']') {
    line.kind = Kind::kSection;
    line.section = UpperCase(Decoded(text.substr(1, text.size() - 2)));
  } else if (const std::size_t equals = text.find('='); equals != std::string_view::npos) {
    line.kind = Kind::kEntry;
    line.key = UpperCase(Decoded(text.substr(0, equals)));
    line.value = Decoded(text.substr(equals + 1));
  }
  return line;
}

std::vector<IniDocument::Line>::const_iterator IniDocument::Find(std::string_view section,
                                                                 std::string_view key) const {
  return std::ranges::find_if(
      lines_, [section = UpperCase(section), key = UpperCase(key)](const Line& line) {
        return line.kind == Kind::kEntry && line.section == section && line.key == key;
      });
}

std::optional<std::string> IniDocument::Get(std::string_view section, std::string_view key) const {
  const auto line = Find(section, key);
  if (line == lines_.end()) return std::nullopt;
  return line->value;
}

void IniDocument::Set(std::string_view section, std::string_view key, std::string_view value) {
  const std::string upper_section = UpperCase(section);
  const auto entry = [&] {
    return Parse(EncodedName(key) + "=" + EncodedValue(value) + LineEnd(), upper_section);
  };
  if (const auto found = Find(section, key); found != lines_.end()) {
    // In the place of the old line, so that comments around it still stand where they belong.
    lines_[static_cast<std::size_t>(found - lines_.begin())] = entry();
    return;
  }
  // Behind the last line of the section that says something, so that blank lines and comments in
  // front of the next section stay with that one.
  const auto last = std::find_if(lines_.rbegin(), lines_.rend(), [&](const Line& line) {
    return line.kind != Kind::kOther && line.section == upper_section;
  });
  if (last != lines_.rend()) {
    // A file written by hand may end without a line end.
    EndLine(*last);
    lines_.insert(last.base(), entry());
    return;
  }
  // A blank line before the new section.
  if (!lines_.empty()) {
    EndLine(lines_.back());
    lines_.push_back(Parse(LineEnd(), ""));
  }
  std::string header = "[";
  header += EncodedName(section) + "]" + LineEnd();
  lines_.push_back(Parse(header, ""));
  lines_.push_back(entry());
}

bool IniDocument::Remove(std::string_view section, std::string_view key) {
  bool removed = false;
  // All of them, or the next one of that name would come into force.
  for (auto line = Find(section, key); line != lines_.end(); line = Find(section, key)) {
    lines_.erase(line);
    removed = true;
  }
  return removed;
}

std::string IniDocument::Text() const {
  std::string text;
  for (const Line& line : lines_) text += line.text;
  return text;
}

void IniDocument::EndLine(Line& line) const {
  if (!line.text.ends_with('\n')) line.text += LineEnd();
}

const char* IniDocument::LineEnd() const {
  // As the first line has it.
  return !lines_.empty() && lines_.front().text.ends_with("\r\n") ? "\r\n" : "\n";
}

}  // namespace korvex
