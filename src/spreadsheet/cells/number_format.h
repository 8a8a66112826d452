// Which number formats show a number as a date or a time.
#pragma once

#include <string_view>

namespace korvex {

// Formats that exist without being written down in the workbook.
bool IsBuiltInDateFormat(int id);

// Whether a format text has a d, m, y, h or s that stands for part of a date. Quoted texts, escaped
// and filling characters and colours, conditions and locales in brackets do not count; elapsed
// times ("[h]:mm") do.
bool IsDateFormat(std::string_view format);

}  // namespace korvex
