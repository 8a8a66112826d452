// Writing: the cells in blocks, each text as the text that it is.
//
// The application reads a text that is put into a cell as if somebody had typed it: "0017" becomes
// 17, "1-2" a date, "=A1" a formula. Not so in a cell whose number format is "@" (text). So the
// cells of texts get that format first, many of them by one call, and then all cells their values,
// thousands by one call. Numbers stay in the general format: under "@" they would become texts.

#include <algorithm>
#include <cstddef>

#include "automation/cell_grid.h"
#include "automation/installed_sheet.h"
#include "automation/installed_workbook.h"
#include "text/utf8.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr int kCellsPerBlock = 32768;
// Some versions of the application refuse longer texts within a block.
constexpr std::size_t kLongestInBlock = 911;

bool IsLongText(const CellValue& cell) {
  return cell.kind == CellKind::kText && cell.text.size() > kLongestInBlock &&
         Utf16Length(cell.text) > kLongestInBlock;
}

// The application takes a leading apostrophe as a mark for text and drops it: put one before it.
bool StartsWithApostrophe(const CellValue& cell) {
  return cell.kind == CellKind::kText && cell.text.starts_with('\'');
}

bool TakesTextFormat(const CellValue& cell) {
  return cell.kind == CellKind::kText && !StartsWithApostrophe(cell);
}

ComValue TypedValue(const CellValue& cell) {
  return StartsWithApostrophe(cell) ? ComValue("'" + std::string(cell.text)) : ComValueOf(cell);
}

}  // namespace

CellValue InstalledOutputSheet::Value(int row, int column) const {
  CheckCellPosition(row, column);
  return cells_.At(row, column);
}

void InstalledOutputSheet::SetValue(int row, int column, const CellValue& value) {
  CheckOutputCell(Owner().Format(), Name(), {row, column}, value);
  const bool is_empty_text = value.kind == CellKind::kText && value.text.empty();
  cells_.Put(row, column, is_empty_text ? CellValue() : value);
  has_changed_ = true;
}

void InstalledOutputSheet::CheckRoom(CellAddress place) const {
  CheckOutputPlace(Owner().Format(), place);
}

int InstalledOutputSheet::CountA(int row) const {
  CheckCellPosition(row, 1);
  return cells_.CountA(row);
}

void InstalledOutputSheet::DeleteColumn(int column) {
  CheckCellPosition(1, column);
  cells_.DeleteColumn(column);
  has_changed_ = true;
}

void InstalledOutputSheet::Upload() {
  if (!has_changed_) return;
  if (was_uploaded_) Object().Object(L"Cells").Call(L"Clear");
  was_uploaded_ = true;
  FormatTexts();
  WriteBlocks();
  WriteLongTexts();
  has_changed_ = false;
}

void InstalledOutputSheet::FormatTexts() const {
  const CellAddress last = LastCell();
  std::vector<std::string> runs;
  for (int column = 1; column <= last.column; ++column) {
    for (int row = 1; row <= last.row; ++row) {
      const int first = row;
      while (row <= last.row && TakesTextFormat(cells_.At(row, column))) ++row;
      if (row > first) runs.push_back(RangeAddress({first, column}, {row - 1, column}));
    }
  }
  for (const std::string& address : JoinAddresses(runs)) {
    Object().Object(L"Range", {address}).Put(L"NumberFormat", "@");
  }
}

void InstalledOutputSheet::WriteBlocks() const {
  const CellAddress last = LastCell();
  const int rows_per_block = std::max(1, kCellsPerBlock / last.column);
  for (int first = 1; first <= last.row; first += rows_per_block) {
    const int rows = std::min(rows_per_block, last.row - first + 1);
    GridBuilder grid(rows, last.column);
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < last.column; ++column) {
        const CellValue cell = cells_.At(first + row, column + 1);
        if (!IsLongText(cell)) grid.Set(row, column, TypedValue(cell));
      }
    }
    Object()
        .Object(L"Range", {RangeAddress({first, 1}, {first + rows - 1, last.column})})
        .Put(L"Value", grid.Take());
  }
}

void InstalledOutputSheet::WriteLongTexts() const {
  const CellAddress last = LastCell();
  for (int row = 1; row <= last.row; ++row) {
    for (int column = 1; column <= last.column; ++column) {
      const CellValue cell = cells_.At(row, column);
      if (!IsLongText(cell)) continue;
      const std::string address = RangeAddress({row, column}, {row, column});
      Object().Object(L"Range", {address}).Put(L"Value", TypedValue(cell));
    }
  }
}

}  // namespace korvex
