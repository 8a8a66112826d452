// An .xlsx or .xlsm workbook.
#pragma once

#include <cstdint>
#include <vector>

#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/xlsx/xlsx_globals.h"

namespace korvex {

class XlsxWorkbook : public WorkbookReader {
 public:
  // Reads what the workbook says about its sheets. Formats, texts and cells are read when a sheet
  // is first asked for, and only the parts that are read are unpacked. `archive` is the buffers'
  // file.
  XlsxWorkbook(ReadBuffers& buffers, ZipArchive archive);

  const std::vector<SheetInfo>& Sheets() const override { return globals_.sheets; }
  CellAddress LastPlace() const override { return kLastXmlPlace; }
  void ReadSheet(std::size_t index, SheetCells& cells) override;

 private:
  // The texts go into the buffers, where cells refer to them.
  void ReadStrings();

  ReadBuffers& buffers_;
  ZipArchive archive_;
  ReadBudget budget_;
  XlsxGlobals globals_;
  bool has_formats_and_strings_ = false;
  std::vector<DateForm> date_forms_;
};

}  // namespace korvex
