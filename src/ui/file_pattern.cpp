#include "ui/file_pattern.h"

#include "platform/error.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::string_view kNeverInNames = "/\\:\"<>|";

// Both upper-cased. A star takes as little as possible at first, and one character more whenever
// the rest does not match.
bool MatchesPattern(std::string_view name, std::string_view pattern) {
  std::string_view after_star;
  std::string_view name_at_star;
  bool has_star = false;
  while (!name.empty()) {
    if (pattern.starts_with('*')) {
      pattern.remove_prefix(1);
      after_star = pattern;
      name_at_star = name;
      has_star = true;
    } else if (pattern.starts_with('?')) {
      pattern.remove_prefix(1);
      name.remove_prefix(FirstUtf8(name).length);
    } else if (!pattern.empty() && pattern.front() == name.front()) {
      pattern.remove_prefix(1);
      name.remove_prefix(1);
    } else if (has_star) {
      name_at_star.remove_prefix(FirstUtf8(name_at_star).length);
      name = name_at_star;
      pattern = after_star;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*') == std::string_view::npos;
}

}  // namespace

FilePattern::FilePattern(const std::string& text) : text_(text) {
  if (text.find_first_of(kNeverInNames) != std::string::npos) {
    throw Error(error_number::kInvalidCall,
                "The pattern " + text + " holds a character that no file name can hold");
  }
  for (const std::string& field : Split(text, ";")) {
    const std::string_view pattern = TrimBlanks(field);
    if (!pattern.empty()) patterns_.push_back(pattern == "*.*" ? "*" : UpperCase(pattern));
  }
  if (patterns_.empty()) {
    throw Error(error_number::kInvalidCall, "The pattern of the file names is empty");
  }
}

bool FilePattern::Matches(std::string_view name) const {
  const std::string upper = UpperCase(name);
  for (const std::string& pattern : patterns_) {
    if (MatchesPattern(upper, pattern)) return true;
  }
  return false;
}

std::string WidenedPattern(const std::string& pattern, const std::vector<std::string>& names) {
  std::string widened = pattern;
  for (const std::string& name : names) {
    if (FilePattern(widened).Matches(name)) continue;
    const std::size_t dot = name.rfind('.');
    // An ending that would itself be read as several patterns, or none, cannot be asked for.
    const bool has_ending = dot != std::string::npos && name.find(';', dot) == std::string::npos &&
                            name.find_first_of(kNeverInNames, dot) == std::string::npos;
    widened += has_ending ? ";*" + name.substr(dot) : ";*";
  }
  return widened;
}

}  // namespace korvex
