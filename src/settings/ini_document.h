// The text of a settings file: sections of "key=value" lines that users may edit by hand.
//
//   [Main Section]
//   ; a comment, also with "#"
//   Output File=all.xls
//   Note=" keeps its blanks%0D%0Aand its line break "
//
// A value reaches from the first "=" to the end of its line, less surrounding blanks and tabs;
// nothing within it is special. What would not survive that stands in quotation marks, with control
// characters and "%" as "%" and two hexadecimal digits; so do names, there with "=" too. Names
// ignore letter case; of several lines with one name the first counts. Lines that are none of this,
// and the line ends, stay as they are.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

class IniDocument {
 public:
  IniDocument() = default;
  explicit IniDocument(std::string_view text);

  std::optional<std::string> Get(std::string_view section, std::string_view key) const;
  // Changes the line that holds the value, or adds one at the end of its section.
  void Set(std::string_view section, std::string_view key, std::string_view value);
  // Removes every line of that name; false when there is none.
  bool Remove(std::string_view section, std::string_view key);
  std::string Text() const;

 private:
  enum class Kind { kOther, kSection, kEntry };
  struct Line {
    Kind kind = Kind::kOther;
    std::string text;     // with its line end
    std::string section;  // upper-cased: the section that the line opens or stands in
    std::string key;      // upper-cased
    std::string value;
  };

  static Line Parse(std::string_view text, const std::string& section);
  std::vector<Line>::const_iterator Find(std::string_view section, std::string_view key) const;
  void EndLine(Line& line) const;
  const char* LineEnd() const;

  std::vector<Line> lines_;
};

}  // namespace korvex
