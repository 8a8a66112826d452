#include "platform/windows/command_line.h"

#include <algorithm>
#include <string_view>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "text/text.h"

#include <shlwapi.h>  // after windows.h

namespace korvex {
namespace {

struct Argument {
  std::wstring text;
  bool has_pattern = false;  // "*" or "?" outside of quotation marks
};

struct CommandLine {
  std::vector<Argument> arguments;
  bool is_closed = true;  // every quotation mark has its other
};

bool IsBlank(wchar_t c) {
  return c == L' ' || c == L'\t';
}

// Takes a command line apart behind the program's name. By the usual rules a backslash before a
// quotation mark makes it part of the argument; with `folders` not one that a blank follows, or
// the end.
class Parser {
 public:
  Parser(std::wstring_view rest, bool folders) : rest_(rest), folders_(folders) {}

  CommandLine Parse() {
    while (SkipBlanks()) line_.arguments.push_back(Next());
    return line_;
  }

 private:
  bool SkipBlanks() {
    while (at_ < rest_.size() && IsBlank(rest_[at_])) ++at_;
    return at_ < rest_.size();
  }
  bool IsEndAt(std::size_t place) const { return place >= rest_.size() || IsBlank(rest_[place]); }

  Argument Next() {
    Argument argument;
    bool quoted = false;
    while (at_ < rest_.size() && (quoted || !IsBlank(rest_[at_]))) {
      const std::size_t backslashes =
          std::min(rest_.find_first_not_of(L'\\', at_), rest_.size()) - at_;
      at_ += backslashes;
      const bool before_mark = at_ < rest_.size() && rest_[at_] == L'"';
      const bool ends_folder = folders_ && quoted && before_mark && IsEndAt(at_ + 1);
      argument.text.append(before_mark && !ends_folder ? backslashes / 2 : backslashes, L'\\');
      if (before_mark) {
        ++at_;
        if (!ends_folder && backslashes % 2 != 0) {
          argument.text += L'"';
        } else if (quoted && at_ < rest_.size() && rest_[at_] == L'"') {
          argument.text += L'"';  // two of them within a quoted text are one
          ++at_;
        } else {
          quoted = !quoted;
        }
      } else if (backslashes == 0) {
        argument.has_pattern |= !quoted && (rest_[at_] == L'*' || rest_[at_] == L'?');
        argument.text += rest_[at_++];
      }
    }
    line_.is_closed = !quoted;
    return argument;
  }

  std::wstring_view rest_;
  bool folders_;
  std::size_t at_ = 0;
  CommandLine line_;
};

// Behind the program's name, which knows no backslashes before quotation marks.
std::wstring_view BehindName(std::wstring_view line) {
  const bool quoted = line.starts_with(L'"');
  const std::size_t end = quoted ? line.find(L'"', 1) : line.find_first_of(L" \t");
  return line.substr(std::min(end == line.npos ? end : end + 1, line.size()));
}

CommandLine Parse(std::wstring_view rest) {
  CommandLine usual = Parser(rest, false).Parse();
  const bool has_mark = std::ranges::any_of(usual.arguments, [](const Argument& argument) {
    return argument.text.find(L'"') != argument.text.npos;
  });
  if (usual.is_closed && !has_mark) return usual;
  // A column may have a quotation mark in its name, a folder cannot: what comes out whole decides.
  CommandLine folders = Parser(rest, true).Parse();
  return folders.is_closed ? folders : usual;
}

std::vector<std::string> Matches(const std::wstring& pattern) {
  const std::size_t name = pattern.find_last_of(L"\\/:") + 1;
  const std::wstring folder = pattern.substr(0, name);
  std::vector<std::string> found;
  WIN32_FIND_DATAW entry;
  const HANDLE search =
      FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr, 0);
  if (search == INVALID_HANDLE_VALUE) return found;
  do {
    const std::wstring_view text = entry.cFileName;
    if (text == L"." || text == L".." || entry.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) continue;
    // The search also goes by the short names of files: by those "*.xls" finds "a.xlsx".
    if (!PathMatchSpecW(entry.cFileName, pattern.c_str() + name)) continue;
    found.push_back(FromWide(folder + entry.cFileName));
  } while (FindNextFileW(search, &entry));
  FindClose(search);
  std::ranges::sort(found, [](const std::string& a, const std::string& b) {
    const int order = CompareText(a, b);
    return order != 0 ? order < 0 : a < b;
  });
  return found;
}

}  // namespace

std::vector<std::string> CommandLineArguments(const std::wstring& command_line) {
  std::vector<std::string> arguments;
  for (const Argument& argument : Parse(BehindName(command_line)).arguments) {
    std::vector<std::string> matches;
    if (argument.has_pattern) matches = Matches(argument.text);
    if (matches.empty()) matches.push_back(FromWide(argument.text));
    arguments.insert(arguments.end(), matches.begin(), matches.end());
  }
  return arguments;
}

}  // namespace korvex
