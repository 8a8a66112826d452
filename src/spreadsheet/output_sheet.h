// A worksheet that is being built in memory.
#pragma once

#include <string>

#include "spreadsheet/cells/cell_store.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class OutputWorkbook;
struct OutputFormat;

// A value that the format of the workbook cannot hold is error 1004 at once. Reading has no such
// limit: cells outside of the format are Empty.
class OutputSheet : public Worksheet {
 public:
  // `workbook` owns the sheet.
  OutputSheet(OutputWorkbook& workbook, std::string name);

  std::string Name() const override { return name_; }
  // Error 1004 for a name that another sheet of the workbook has; letter case is ignored.
  void SetName(const std::string& name) override;
  int Index() const override;
  // The sheet that a saved file shows first.
  void Activate() override;
  // Error 1004 for the last sheet of a workbook.
  void Delete() override;

  CellValue Value(int row, int column) const override;
  // An empty text empties the cell, as it does in the object model.
  void SetValue(int row, int column, const CellValue& value) override;
  CellAddress LastCell() const override;
  void CheckRoom(CellAddress place) const override;
  int CountA(int row) const override;
  void DeleteColumn(int column) override;

  const CellStore& Cells() const { return cells_; }
  // Error 1004 for the first cell that the format cannot hold.
  void CheckFits(const OutputFormat& format) const;

 private:
  OutputWorkbook& workbook_;
  std::string name_;
  CellStore cells_;
};

}  // namespace korvex
