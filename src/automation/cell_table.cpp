#include "automation/cell_table.h"

#include <algorithm>

namespace korvex {

CellValue CellTable::At(int row, int column) const {
  const auto at_row = static_cast<std::size_t>(row) - 1;
  const auto at_column = static_cast<std::size_t>(column) - 1;
  if (at_row >= rows_.size() || at_column >= rows_[at_row].size()) return {};
  return rows_[at_row][at_column];
}

void CellTable::Put(int row, int column, const CellValue& value) {
  const auto at_row = static_cast<std::size_t>(row) - 1;
  const auto at_column = static_cast<std::size_t>(column) - 1;
  CellValue cell = value;
  if (cell.kind == CellKind::kText) cell.text = Keep(cell.text);
  // Writing nothing into an empty cell must not make the table larger.
  if (cell.kind == CellKind::kEmpty && At(row, column).kind == CellKind::kEmpty) return;
  if (at_row >= rows_.size()) rows_.resize(at_row + 1);
  if (at_column >= rows_[at_row].size()) rows_[at_row].resize(at_column + 1);
  rows_[at_row][at_column] = cell;
}

std::string_view CellTable::Keep(std::string_view text) {
  // A plate has a few texts many times over: names of compounds, plates, wells.
  const auto known = texts_.find(text);
  return known != texts_.end() ? *known : *texts_.emplace(text).first;
}

void CellTable::DeleteColumn(int column) {
  for (Row& row : rows_) {
    if (static_cast<std::size_t>(column) <= row.size()) row.erase(row.begin() + (column - 1));
  }
}

int CellTable::CountA(int row) const {
  const auto at_row = static_cast<std::size_t>(row) - 1;
  if (at_row >= rows_.size()) return 0;
  return static_cast<int>(std::ranges::count_if(
      rows_[at_row], [](const CellValue& cell) { return cell.kind != CellKind::kEmpty; }));
}

CellAddress CellTable::LastCell() const {
  CellAddress last;
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    std::size_t end = rows_[row].size();
    while (end > 0 && rows_[row][end - 1].kind == CellKind::kEmpty) --end;
    if (end == 0) continue;
    // The last row that is not empty, and the widest of all rows.
    last = {static_cast<int>(row) + 1, std::max(last.column, static_cast<int>(end))};
  }
  return last;
}

}  // namespace korvex
