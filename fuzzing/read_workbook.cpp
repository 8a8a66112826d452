#include "fuzzing/fuzz_target.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/error.h"
#include "spreadsheet/file_kind.h"
#include "spreadsheet/open_workbook.h"
#include "text/utf8.h"
#include "workbook/cell_text.h"

namespace korvex::fuzz {
namespace {

constexpr std::size_t kMostSheets = 4;
// A few bytes can repeat a cell a million times: checking all would take longer than reading them.
constexpr std::size_t kMostChecked = 100'000;
// The largest sheet of any format, written out: a check must not take its limits from what it
// checks.
constexpr int kMaxRows = 1048576;
constexpr int kMaxColumns = 16384;
constexpr double kDateLimit = 2958466;

void CheckText(std::string_view text) {
  while (!text.empty()) {
    const Utf8Character first = FirstUtf8(text);
    Require(first.code != kInvalidByte, "texts are UTF-8");
    text.remove_prefix(first.length);
  }
}

void CheckValue(const CellValue& value) {
  Require(value.kind != CellKind::kEmpty, "empty cells are not listed");
  Require(std::isfinite(value.number), "numbers are finite");
  if (value.kind == CellKind::kText) CheckText(value.text);
  if (value.kind == CellKind::kDate) {
    Require(value.number >= 0 && value.number < kDateLimit, "dates are dates");
  }
  if (value.kind == CellKind::kError) {
    Require(value.number >= 0 && value.number < 256, "errors have codes");
  }
  CellText(value);
  IsNumeric(value);
}

void CheckCells(const SheetCells& cells) {
  const CellAddress last = cells.LastCell();
  Require(last.row >= 1 && last.row <= kMaxRows, "the last row is one of a sheet");
  Require(last.column >= 1 && last.column <= kMaxColumns, "the last column is one of a sheet");
  int row = 0;
  int column = 0;
  for (std::size_t i = 0; i < std::min(cells.Count(), kMostChecked); ++i) {
    const SheetCells::Entry cell = cells.At(i);
    Require(cell.row > row || (cell.row == row && cell.column > column), "cells are in order");
    row = cell.row;
    column = cell.column;
    Require(row <= last.row && column >= 1 && column <= last.column, "the last cell is the last");
    Require(cells.Value(row, column) == cell.value, "cells are found");
    CheckValue(cell.value);
  }
}

}  // namespace

void ReadWorkbook(std::span<const std::byte> file) {
  const WorkbookForm form = RecognizeFile(file).form;
  const bool is_packed = form == WorkbookForm::kZip || form == WorkbookForm::kFlatOpenDocument;
  const MemoryPromise promise(
      file.size(), is_packed ? MemoryPromise::Input::kPacked : MemoryPromise::Input::kPlain);
  ReadBuffers buffers;
  buffers.file.assign(file.begin(), file.end());
  try {
    const auto workbook = OpenWorkbookReader(buffers);
    const std::size_t sheets = std::min(workbook->Sheets().size(), kMostSheets);
    for (std::size_t i = 0; i < sheets; ++i) {
      CheckText(workbook->Sheets()[i].name);
      workbook->ReadSheet(i, buffers.cells);
      CheckCells(buffers.cells);
    }
  } catch (const Error& error) {
    CheckText(error.Description());
  }
}

}  // namespace korvex::fuzz
