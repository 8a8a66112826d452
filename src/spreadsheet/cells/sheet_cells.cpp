#include "spreadsheet/cells/sheet_cells.h"

#include <algorithm>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/cells/typed_value.h"

namespace korvex {

namespace {

constexpr std::size_t kSmallDisorder = 65536;

// Rows are found through an index of their starts. In a sheet with many more rows than cells the
// index would be larger than the cells; there they are found by binary search.
constexpr std::size_t kSparseRows = 65536;
constexpr std::size_t kSparseRowsPerCell = 16;

}  // namespace

void SheetCells::Clear(const TextArena* shared, Repeats repeats) {
  cells_.clear();
  row_starts_.clear();
  own_texts_.Clear();
  texts_above_.clear();
  shared_texts_ = shared;
  repeats_ = repeats;
  shown_text_ = 0;
  next_place_ = 0;
  is_ordered_ = true;
  doubts_ = {};
  has_uncalculated_ = false;
  order_at_ = kSmallDisorder;
  last_row_ = 0;
  last_column_ = 0;
}

// A blank needs a cell of its own only where it may replace a value that came before it.
void SheetCells::AddBlanks(std::uint32_t row, std::uint16_t first_column, int count) {
  if (count < 1) return;
  const auto end = static_cast<std::uint16_t>(first_column + count);
  for (std::uint16_t column = first_column; column < end; ++column) {
    if (Place(row, column) >= next_place_) break;
    Add(row, column, CellKind::kEmpty, false, {.number = 0});
  }
  last_row_ = std::max(last_row_, row);
  last_column_ = std::max<std::uint16_t>(last_column_, end - 1);
}

void SheetCells::ConfirmDoubts(DoubtGround ground) {
  for (Cell& cell : cells_) {
    const bool is_meant =
        ground == DoubtGround::kEmptyText ? cell.is_doubted_text : cell.is_doubted_request;
    if (is_meant) MarkUncalculated(cell);
  }
}

void SheetCells::MarkUncalculated(Cell& cell) {
  cell.kind = CellKind::kError;
  cell.content = {.number = kNotAvailableError};
  cell.is_uncalculated = true;
  has_uncalculated_ = true;
}

// Called when a cell is added in front of another one. It may be at a place that has a cell
// already: a file that fills the same places again and again must not take memory each time, so
// that now and then the cells are sorted, and doubles removed.
void SheetCells::GoBack() {
  if (cells_.size() >= order_at_) {
    Order();
    order_at_ = std::max(kSmallDisorder, 2 * cells_.size());
  }
  is_ordered_ = false;
}

// Sorts the cells and removes blanks and, of several at one place, all but the last. The sort is
// stable: equal places keep the order in which they came.
void SheetCells::Order() {
  std::stable_sort(cells_.begin(), cells_.end(),
                   [](const Cell& a, const Cell& b) { return Place(a) < Place(b); });
  Cell* out = cells_.begin();
  for (const Cell* cell = cells_.begin(); cell != cells_.end(); ++cell) {
    const Cell* const later = cell + 1;
    if (later != cells_.end() && Place(*later) == Place(*cell)) {
      if (repeats_ == Repeats::kAreDamage && cell->kind != CellKind::kEmpty) {
        Refuse("is damaged: it has more than one value for cell " +
               CellName({cell->row, cell->column}));
      }
      continue;
    }
    if (cell->kind != CellKind::kEmpty) *out++ = *cell;
  }
  cells_.CutAt(out);
  is_ordered_ = true;
}

TextRange SheetCells::ShareText(std::uint16_t column, TextRange text) {
  if (column >= texts_above_.size()) texts_above_.resize(column + std::size_t{1});
  TextRange& above = texts_above_[column];
  if (text.offset != above.offset && own_texts_.Text(text) == own_texts_.Text(above)) {
    if (text.offset + text.length == own_texts_.Size()) own_texts_.CutAt(text.offset);
    return above;
  }
  return above = text;
}

void SheetCells::Finish(const ReadBudget& budget) {
  budget.CheckShownText(shown_text_);
  if (next_place_ > 0)
    last_row_ = std::max(last_row_, static_cast<std::uint32_t>((next_place_ - 1) >> 16));
  if (!is_ordered_) Order();
  row_starts_.clear();
  if (cells_.empty() || cells_.back().row > kSparseRows + kSparseRowsPerCell * cells_.size())
    return;
  std::uint32_t at = 0;
  for (const Cell& cell : cells_) {
    while (row_starts_.size() <= cell.row) row_starts_.push_back(at);
    ++at;
  }
  row_starts_.push_back(at);
}

int SheetCells::CountA(int row) const {
  const Row cells = RowOf(row);
  return static_cast<int>(cells.end - cells.begin);
}

[[gnu::noinline]] const SheetCells::Cell* SheetCells::FindAmongGaps(const Row& row,
                                                                    int column) const {
  const Cell* const end = cells_.data() + row.end;
  const Cell* const found =
      std::lower_bound(cells_.data() + row.begin, end, column - 1,
                       [](const Cell& cell, int wanted) { return cell.column < wanted; });
  return found != end && found->column == column - 1 ? found : nullptr;
}

[[gnu::noinline]] bool SheetCells::HasUncalculatedAt(int row, int column) const {
  const Cell* const cell = Find(RowOf(row), column);
  return cell != nullptr && cell->is_uncalculated;
}

SheetCells::Row SheetCells::FindRow(int row) const {
  if (row < 1) return {};
  const auto wanted = static_cast<std::uint32_t>(row - 1);
  const auto position = [this](std::uint32_t place) {
    const auto at = std::lower_bound(
        cells_.begin(), cells_.end(), place,
        [](const Cell& cell, std::uint32_t wanted_row) { return cell.row < wanted_row; });
    return static_cast<std::uint32_t>(at - cells_.begin());
  };
  return {position(wanted), position(wanted + 1)};
}

SheetCells::Entry SheetCells::At(std::size_t index) const {
  const Cell& cell = cells_[index];
  return {static_cast<int>(cell.row) + 1, cell.column + 1, View(cell), cell.is_uncalculated};
}

std::size_t SheetCells::MemorySize() const {
  return cells_.capacity() * sizeof(Cell) + row_starts_.capacity() * sizeof(std::uint32_t) +
         texts_above_.capacity() * sizeof(TextRange) + own_texts_.Capacity();
}

}  // namespace korvex
