#include "automation/installed_sheet.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "automation/cell_grid.h"
#include "automation/installed_workbook.h"
#include "platform/error.h"
#include "text/text.h"
#include "text/utf8.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

// For reading.
constexpr int kLastCellType = 11;  // of SpecialCells
constexpr int kVisibleSheet = -1;
constexpr int kCellsPerCall = 1 << 20;           // 24 bytes each
constexpr std::int64_t kMostCells = 64LL << 20;  // all rows of an .xlsx sheet, 64 columns wide

CellAddress AddressOf(const Dispatch& range) {
  return {range.Get(L"Row").Integer(), range.Get(L"Column").Integer()};
}

// For writing.
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

InstalledSheet::InstalledSheet(InstalledWorkbook& workbook, Dispatch sheet, std::string name)
    : workbook_(workbook), sheet_(std::move(sheet)), name_(std::move(name)) {}

void InstalledSheet::SetName(const std::string& name) {
  CheckSheetName(name);
  sheet_.Put(L"Name", name);
  name_ = name;
}

int InstalledSheet::Index() const {
  return sheet_.Get(L"Index").Integer();
}

void InstalledSheet::Activate() {
  // The application refuses to activate a hidden sheet, but lets it be read.
  if (sheet_.Get(L"Visible").Integer() == kVisibleSheet) sheet_.Call(L"Activate");
}

void InstalledSheet::Delete() {
  sheet_.Call(L"Delete");
  workbook_.Drop(*this);
}

// Reading: all cells of a sheet in one call, unless there are very many.

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
  const Dispatch used = Object().Object(L"UsedRange");
  CellAddress last = AddressOf(used);
  last.row += used.Object(L"Rows").Get(L"Count").Integer() - 1;
  last.column += used.Object(L"Columns").Get(L"Count").Integer() - 1;
  // SpecialCells fails on a protected sheet, and can end too early where a filter hides rows.
  Attempt([&] {
    const Dispatch cells = Object().Object(L"Cells");
    const CellAddress found =
        AddressOf(cells.ObjectFrom(cells.Call(L"SpecialCells", {kLastCellType})));
    last = {std::max(last.row, found.row), std::max(last.column, found.column)};
  });
  return last;
}

const CellTable& InstalledInputSheet::Cells() const {
  // An input does not change while it is open for reading, so one look is enough.
  if (cells_ != nullptr) return *cells_;
  const CellAddress last = LastCell();
  // A format on a whole column makes the used range reach to the last row.
  if (std::int64_t{last.row} * last.column > kMostCells) {
    throw Error(error_number::kAutomation,
                "The sheet \"" + Name() + "\" of " + Owner().Name() + " reaches to cell " +
                    RangeAddress(last, last) +
                    ", which is more than can be read. Delete the empty rows and columns that are "
                    "only formatted.");
  }
  // Kept only when all of it has arrived: half a sheet must not look like a whole one.
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
  // Value gives dates as dates but rounds currency; Value2 gives both as plain numbers.
  ComValue values;
  if (!Attempt([&] { values = range.Get(L"Value"); })) {
    // It fails for dates that COM has none for. An application that has ended fails here, too.
    values = range.Get(L"Value2");
    if (first != last) {
      FetchHalves(first, last, cells);
      return;
    }
  }
  const GridView grid(values);
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

// Down to the single cells that are to blame: the dates in the others stay dates.
void InstalledInputSheet::FetchHalves(CellAddress first, CellAddress last, CellTable& cells) const {
  CellAddress end = last;     // of the first half
  CellAddress begin = first;  // of the second one
  if (first.row < last.row) {
    end.row = first.row + (last.row - first.row) / 2;
    begin.row = end.row + 1;
  } else {
    end.column = first.column + (last.column - first.column) / 2;
    begin.column = end.column + 1;
  }
  Fetch(first, end, cells);
  Fetch(begin, last, cells);
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

// Writing: the cells in blocks, each text as the text that it is.
//
// The application reads a text that is put into a cell as if somebody had typed it: "0017" becomes
// 17, "1-2" a date, "=A1" a formula. Not so in a cell whose number format is "@" (text). So the
// cells of texts get that format first, many of them by one call, and then all cells their values,
// thousands by one call. Numbers stay in the general format: under "@" they would become texts.

CellValue InstalledOutputSheet::Value(int row, int column) const {
  CheckCellPosition(row, column);
  return cells_.At(row, column);
}

void InstalledOutputSheet::SetValue(int row, int column, const CellValue& value) {
  CheckOutputCell(Owner().Format(), Name(), {row, column}, value);
  // The application has no empty texts in cells: it would clear the cell.
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
  // What was saved before may reach further than what is there now.
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
        // Long texts follow one by one.
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
