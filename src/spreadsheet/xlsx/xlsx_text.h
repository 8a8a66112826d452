// Texts of .xlsx workbooks: <si> and <is> with <t>, runs <r> with a <t> each, and phonetic runs
// <rPh>, which do not count. Blanks around a text stay even where nothing asks for it: not every
// writer does.
#pragma once

#include <string>
#include <string_view>

#include "spreadsheet/bytes/text_arena.h"
#include "spreadsheet/bytes/xml_parser.h"

namespace korvex::xlsx {

inline constexpr char kMain = 'm';
inline constexpr char kRelations = 'r';  // attributes that name a relationship
inline constexpr char kPackage = 'p';    // the lists of relationships

inline constexpr XmlNamespace kNamespaces[] = {
    {"http://schemas.openxmlformats.org/spreadsheetml/2006/main", kMain},
    {"http://purl.oclc.org/ooxml/spreadsheetml/main", kMain},
    {"http://schemas.openxmlformats.org/officeDocument/2006/relationships", kRelations},
    {"http://purl.oclc.org/ooxml/officeDocument/relationships", kRelations},
    {"http://schemas.openxmlformats.org/package/2006/relationships", kPackage},
};

}  // namespace korvex::xlsx

namespace korvex {

// Appends a text, in which "_x000D_" stands for the UTF-16 unit 000D.
void AppendEscapedText(std::string_view text, TextArena& out);

// Takes what is in <si> or <is>, however many after each other.
class XlsxTextReader {
 public:
  bool Start(const XmlElement& element);
  void Text(std::string_view text) {
    if (is_in_text_) text_ += text;
  }
  void End(const XmlName& name, TextArena& out);

 private:
  bool is_in_text_ = false;
  std::string text_;
};

}  // namespace korvex
