#include "spreadsheet/output_sheet.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "spreadsheet/output_workbook.h"
#include "workbook/output_rules.h"

namespace korvex {

OutputSheet::OutputSheet(OutputWorkbook& workbook, std::string name)
    : workbook_(workbook), name_(std::move(name)) {}

void OutputSheet::SetName(const std::string& name) {
  workbook_.CheckSheetName(name, *this);
  name_ = name;
}

int OutputSheet::Index() const {
  return workbook_.IndexOf(*this);
}

void OutputSheet::Activate() {
  workbook_.Activate(*this);
}

void OutputSheet::Delete() {
  workbook_.Delete(*this);
}

CellValue OutputSheet::Value(int row, int column) const {
  CheckCellPosition(row, column);
  const StoredCell cell = cells_.At(row - 1, column - 1);
  if (cell.kind == CellKind::kEmpty) return {};
  if (cell.kind == CellKind::kText) {
    return CellValue::Text(workbook_.Texts().Text(static_cast<std::uint32_t>(cell.bits)));
  }
  return {cell.kind, std::bit_cast<double>(cell.bits), {}};
}

// Refuses at once what the format cannot hold: when the workbook is saved, the run is over.
void OutputSheet::SetValue(int row, int column, const CellValue& value) {
  CheckOutputCell(workbook_.Format(), name_, {row, column}, value);
  StoredCell cell = {value.kind, std::bit_cast<std::uint64_t>(value.number)};
  // A text is stored once in the workbook and by its id in the cell.
  if (value.kind == CellKind::kText) {
    cell = value.text.empty() ? StoredCell{}
                              : StoredCell{CellKind::kText, workbook_.Texts().Intern(value.text)};
  }
  cells_.Put(row - 1, column - 1, cell);
}

CellAddress OutputSheet::LastCell() const {
  CellAddress last;
  for (int column = 0; column < cells_.ColumnCount(); ++column) {
    const int end = cells_.RowEnd(column);
    if (end > 0) last = {std::max(last.row, end), column + 1};
  }
  return last;
}

void OutputSheet::CheckRoom(CellAddress place) const {
  CheckOutputPlace(workbook_.Format(), place);
}

// For a format other than the one that SetValue checked against.
void OutputSheet::CheckFits(const OutputFormat& format) const {
  for (int column = 1; column <= cells_.ColumnCount(); ++column) {
    const int last_row = cells_.RowEnd(column - 1);
    for (int row = 1; row <= last_row; ++row) {
      const CellValue value = Value(row, column);
      if (value.kind != CellKind::kEmpty) CheckOutputCell(format, name_, {row, column}, value);
    }
  }
}

int OutputSheet::CountA(int row) const {
  CheckCellPosition(row, 1);
  return cells_.CountInRow(row - 1);
}

void OutputSheet::DeleteColumn(int column) {
  CheckCellPosition(1, column);
  cells_.DeleteColumn(column - 1);
}

}  // namespace korvex
