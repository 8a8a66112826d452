// Reads what an .xlsx workbook says about its parts, sheets and formats.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/zip_archive.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

// What the part of the workbook says, and the parts that its relationships name. Names of parts
// have no "/" in front.
struct XlsxGlobals {
  bool uses_1904 = false;
  bool calculates_on_load = false;
  std::vector<SheetInfo> sheets;
  std::vector<std::string> sheet_parts;  // "" for a sheet that has none
  std::string strings_part;              // "" when there is none
  std::string styles_part;
};

// Finds the workbook through the relationships of the package, and sheets, texts and styles through
// those of the workbook. A relationship's kind is the end of its type, which is the same in the
// strict and in the transitional form of the format.
XlsxGlobals ReadXlsxGlobals(const ZipArchive& archive, ReadBudget& budget);

// What each cell format, by its index, shows of a date. Empty when `part` is "".
std::vector<DateForm> ReadXlsxDateForms(const ZipArchive& archive, const std::string& part,
                                        ReadBudget& budget);

}  // namespace korvex
