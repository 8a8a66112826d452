// Namespaces of OpenDocument files.
#pragma once

#include "spreadsheet/bytes/xml_parser.h"

namespace korvex::ods {

inline constexpr char kOffice = 'o';
inline constexpr char kTable = 't';
inline constexpr char kText = 'x';
inline constexpr char kStyle = 's';
inline constexpr char kCalc = 'c';  // what spreadsheet programs add to the standard

inline constexpr XmlNamespace kNamespaces[] = {
    {"urn:oasis:names:tc:opendocument:xmlns:table:1.0", kTable},
    {"urn:oasis:names:tc:opendocument:xmlns:text:1.0", kText},
    {"urn:oasis:names:tc:opendocument:xmlns:office:1.0", kOffice},
    {"urn:oasis:names:tc:opendocument:xmlns:style:1.0", kStyle},
    {"urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0", kCalc},
};

}  // namespace korvex::ods
