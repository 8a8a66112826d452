// Reading: all cells of a sheet in one call, unless there are very many.

#include <algorithm>
#include <cstdint>

#include "automation/cell_grid.h"
#include "automation/installed_sheet.h"
#include "automation/installed_workbook.h"
#include "platform/error.h"
#include "text/text.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr int kLastCellType = 11;                // of SpecialCells
constexpr int kCellsPerCall = 1 << 20;           // 24 bytes each
constexpr std::int64_t kMostCells = 64LL << 20;  // all rows of an .xlsx sheet, 64 columns wide

CellAddress AddressOf(const Dispatch& range) {
  return {range.Get(L"Row").Integer(), range.Get(L"Column").Integer()};
}

}  // namespace

CellValue InstalledInputSheet::Value(int row, int column) const {
  CheckCellPosition(row, column);
  return Cells().At(row, column);
}

int InstalledInputSheet::CountA(int row) const {
  CheckCellPosition(row, 1);
  return Cells().CountA(row);
}

CellAddress InstalledInputSheet::LastCell() const {
  if (last_cell_.row == 0) last_cell_ = FindLastCell();
  return last_cell_;
}

CellAddress InstalledInputSheet::FindLastCell() const {
  try {
    const Dispatch cells = Object().Object(L"Cells");
    return AddressOf(cells.ObjectFrom(cells.Call(L"SpecialCells", {kLastCellType})));
  } catch (const Error&) {
    // SpecialCells fails on a protected sheet; UsedRange ends in the same cell.
    const Dispatch used = Object().Object(L"UsedRange");
    const CellAddress first = AddressOf(used);
    return {first.row + used.Object(L"Rows").Get(L"Count").Integer() - 1,
            first.column + used.Object(L"Columns").Get(L"Count").Integer() - 1};
  }
}

const CellTable& InstalledInputSheet::Cells() const {
  if (cells_ != nullptr) return *cells_;
  const CellAddress last = LastCell();
  if (std::int64_t{last.row} * last.column > kMostCells) {
    throw Error(error_number::kAutomation,
                "The sheet \"" + Name() + "\" of " + Owner().Name() + " reaches to cell " +
                    RangeAddress(last, last) +
                    ", which is more than can be read. Delete the empty rows and columns that are "
                    "only formatted.");
  }
  auto cells = std::make_unique<CellTable>();
  const int rows_per_call = std::max(1, kCellsPerCall / last.column);
  for (int row = 1; row <= last.row; row += rows_per_call) {
    Fetch({row, 1}, {std::min(last.row, row + rows_per_call - 1), last.column}, *cells);
  }
  cells_ = std::move(cells);
  return *cells_;
}

void InstalledInputSheet::Fetch(CellAddress first, CellAddress last, CellTable& cells) const {
  const Dispatch range = Object().Object(L"Range", {RangeAddress(first, last)});
  const ComValue values = range.Get(L"Value");
  const GridView grid(values);
  // Value gives dates as dates but rounds currency; Value2 gives both as plain numbers.
  const ComValue exact_values = grid.HoldsCurrency() ? range.Get(L"Value2") : ComValue();
  const GridView exact(exact_values);
  std::string text;
  for (int row = 0; row < grid.Rows(); ++row) {
    for (int column = 0; column < grid.Columns(); ++column) {
      const bool is_currency = grid.At(row, column).vt == VT_CY;
      const CellValue cell = CellFrom((is_currency ? exact : grid).At(row, column), text);
      cells.Put(first.row + row, first.column + column, cell);
    }
  }
}

void InstalledInputSheet::SetValue(int, int, const CellValue&) {
  RefuseChange();
}

void InstalledInputSheet::CheckRoom(CellAddress) const {
  RefuseChange();
}

void InstalledInputSheet::DeleteColumn(int) {
  RefuseChange();
}

void InstalledInputSheet::RefuseChange() const {
  throw Error(error_number::kAutomation, Owner().Name() + " is opened for reading only");
}

}  // namespace korvex
