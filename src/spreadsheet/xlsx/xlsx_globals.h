// What an .xlsx workbook says about its parts, sheets and formats.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/zip_archive.h"
#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

struct XlsxGlobals {
  bool uses_1904 = false;
  bool calculates_on_load = false;
  std::vector<SheetInfo> sheets;
  std::vector<std::string> sheet_parts;  // "" for a sheet that has none
  std::string strings_part;              // "" when there is none
  std::string styles_part;
};

// Finds the workbook by the relationships of the package, and what belongs to it by those of the
// workbook. Kinds of relationships are told by the end of their type, which is the same in the
// strict and in the transitional form.
XlsxGlobals ReadXlsxGlobals(const ZipArchive& archive, ReadBudget& budget);

// By index of a cell's format, 0 or 1: whether it shows a date.
std::vector<std::uint8_t> ReadXlsxDateFormats(const ZipArchive& archive, const std::string& part,
                                              ReadBudget& budget);

}  // namespace korvex
