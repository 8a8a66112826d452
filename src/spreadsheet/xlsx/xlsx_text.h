// What the readers of all parts of an .xlsx workbook need: the namespaces, and the form of texts.
#pragma once

#include <string>
#include <string_view>

#include "spreadsheet/bytes/text_arena.h"
#include "spreadsheet/bytes/xml_parser.h"

// The namespaces in their transitional and their strict form.
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

// Appends a text, in which "_x000D_" stands for the UTF-16 unit 000D: XML has no control
// characters.
void AppendEscapedText(std::string_view text, TextArena& out);

// Reads texts one after the other, from the elements in <si> or <is>: a <t>, or runs <r> with a <t>
// each. Phonetic runs <rPh> are not part of the text. Blanks around a text always count, although
// the format wants xml:space="preserve" for them: not all writers give it.
class XlsxTextReader {
 public:
  bool Start(const XmlElement& element);
  void Text(std::string_view text) {
    if (is_in_text_) text_.Append(text);
  }
  void KeepText() { text_.Keep(); }
  void End(const XmlName& name, TextArena& out);

 private:
  bool is_in_text_ = false;
  XmlText text_;
};

}  // namespace korvex
