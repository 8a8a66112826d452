// Which file names a list shows: patterns with "*" for any characters and "?" for any one, several
// of them separated by ";". Letter case does not count, and neither do blanks around a pattern.
// "*.*" stands for every file, with or without a dot.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvex {

class FilePattern {
 public:
  // Error 5 for a text without any pattern, and for characters that no file name can hold.
  explicit FilePattern(const std::string& text);

  const std::string& Text() const { return text_; }
  bool Matches(std::string_view name) const;

 private:
  std::string text_;
  std::vector<std::string> patterns_;  // upper-cased
};

// The pattern with what it lacks to match all of these names: "*.xls" becomes "*.xls;*.ods".
std::string WidenedPattern(const std::string& pattern, const std::vector<std::string>& names);

}  // namespace korvex
