// An .xls workbook: BIFF5 to BIFF8 in a compound file, or as it stands.
#pragma once

#include <string>

#include "spreadsheet/xls/biff_globals.h"
#include "spreadsheet/xls/biff_records.h"

namespace korvex {

class BiffWorkbook : public WorkbookReader {
 public:
  // Reads the globals; sheets and texts wait until they are asked for.
  explicit BiffWorkbook(ReadBuffers& buffers);

  const std::vector<SheetInfo>& Sheets() const override { return globals_.sheets; }
  CellAddress LastPlace() const override { return {biff::kMaxRows, biff::kMaxColumns}; }
  void ReadSheet(std::size_t index, SheetCells& cells) override;

 private:
  // Finds the workbook stream, as it is; true when its name is that of Excel 5.
  bool LoadStream();
  void CheckBegin(const std::string& sheet, std::size_t offset) const;
  template <typename Step>
  void NamingCut(Step&& step) const;

  struct Buffers;

  ReadBuffers& buffers_;
  Buffers& own_;
  std::span<const std::byte> stream_;
  std::string cut_;  // how much of the file is there, when sectors of the stream are not
  BiffGlobals globals_;
  bool has_strings_ = false;
  std::size_t bytes_read_ = 0;  // of the stream, by all sheets
};

}  // namespace korvex
