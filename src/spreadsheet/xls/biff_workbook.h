// An .xls workbook: a stream of BIFF5 to BIFF8 records, in a compound file or without one.
#pragma once

#include <string>

#include "spreadsheet/xls/biff_globals.h"
#include "spreadsheet/xls/biff_records.h"

namespace korvex {

class BiffWorkbook : public WorkbookReader {
 public:
  // Reads the globals. Texts and sheets are read when they are first asked for. Refuses files that
  // are damaged, cut or protected by a password.
  explicit BiffWorkbook(ReadBuffers& buffers);

  const std::vector<SheetInfo>& Sheets() const override { return globals_.sheets; }
  CellAddress LastPlace() const override { return {biff::kMaxRows, biff::kMaxColumns}; }
  void ReadSheet(std::size_t index, SheetCells& cells) override;

 private:
  // Finds the workbook stream, which may be encrypted; true when it has the name that Excel 5
  // gives.
  bool LoadStream();
  // Refuses a sheet at whose offset in the stream no sheet begins.
  void CheckBegin(const std::string& sheet, std::size_t offset) const;
  // Runs a step of reading. A refusal becomes that of a cut file, if the file is one: this says
  // more.
  template <typename Step>
  void NamingCut(Step&& step) const;

  struct Buffers;

  ReadBuffers& buffers_;
  Buffers& own_;
  std::span<const std::byte> stream_;
  std::string cut_;  // the refusal of a file that is cut, if sectors of the stream are missing
  BiffGlobals globals_;
  bool has_strings_ = false;
  std::size_t bytes_read_ = 0;  // of the stream, by all sheets
};

}  // namespace korvex
