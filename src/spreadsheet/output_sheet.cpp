#include "spreadsheet/output_sheet.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "platform/error.h"
#include "spreadsheet/biff_records.h"
#include "spreadsheet/output_workbook.h"
#include "spreadsheet/refusal.h"
#include "spreadsheet/utf16.h"

namespace korvex {

namespace {

void CheckPosition(int row, int column) {
  if (row < 1 || column < 1) {
    Refuse("There is no cell in row " + std::to_string(row) + ", column " + std::to_string(column) +
           ": rows and columns count from 1.");
  }
}

std::string CellName(const std::string& sheet, int row, int column) {
  std::string letters;
  for (int rest = column; rest > 0; rest = (rest - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
  }
  return "Cell " + letters + std::to_string(row) + " of sheet \"" + sheet + "\"";
}

void CheckLimits(int row, int column) {
  if (row > biff::kMaxRows) {
    Refuse("The .xls format holds at most 65,536 rows a sheet; row " +
           GroupedDigits(static_cast<std::uint64_t>(row)) +
           " does not fit. Split the campaign into parts with fewer keys each and convert them "
           "one by one.");
  }
  if (column > biff::kMaxColumns) {
    Refuse("The .xls format holds at most 256 columns a sheet; column " + std::to_string(column) +
           " does not fit. Choose fewer output columns or convert fewer replications at a time.");
  }
}

}  // namespace

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
  CheckPosition(row, column);
  const StoredCell cell = cells_.At(row - 1, column - 1);
  if (cell.kind == CellKind::kEmpty) return {};
  if (cell.kind == CellKind::kText) {
    return CellValue::Text(workbook_.Texts().Text(static_cast<std::uint32_t>(cell.bits)));
  }
  return {cell.kind, std::bit_cast<double>(cell.bits), {}};
}

void OutputSheet::SetValue(int row, int column, const CellValue& value) {
  CheckPosition(row, column);
  CheckLimits(row, column);
  const auto refuse = [&](const std::string& cause) {
    Refuse(CellName(name_, row, column) + " cannot hold " + cause);
  };
  StoredCell cell = {value.kind, std::bit_cast<std::uint64_t>(value.number)};
  if (value.kind == CellKind::kText) {
    // No text has more UTF-16 units than bytes.
    if (value.text.size() > biff::kMaxCellCharacters &&
        Utf16Length(value.text) > biff::kMaxCellCharacters) {
      refuse("its text of " + GroupedDigits(Utf16Length(value.text)) +
             " characters: the .xls format holds at most 32,767 a cell. Shorten it in the input.");
    }
    cell = value.text.empty() ? StoredCell{}
                              : StoredCell{CellKind::kText, workbook_.Texts().Intern(value.text)};
  } else if (!std::isfinite(value.number)) {
    refuse("a number that is infinite or undefined.");
  } else if (value.kind == CellKind::kError && (value.number < 0 || value.number > 255)) {
    refuse("an error code outside 0 to 255.");
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

int OutputSheet::CountA(int row) const {
  CheckPosition(row, 1);
  int count = 0;
  for (int column = 0; column < cells_.ColumnCount(); ++column) {
    if (cells_.At(row - 1, column).kind != CellKind::kEmpty) ++count;
  }
  return count;
}

void OutputSheet::DeleteColumn(int column) {
  CheckPosition(1, column);
  cells_.DeleteColumn(column - 1);
}

}  // namespace korvex
