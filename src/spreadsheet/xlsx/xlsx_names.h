// Namespaces of the parts of .xlsx workbooks, transitional and strict.
#pragma once

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
