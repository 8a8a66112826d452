// The cells of one sheet in memory, whatever format they were read from.
//
// Values lie in one flat run ordered by row and column; formatted blanks take part in the last cell
// only. Reading uses one-based rows and columns, filling (`Add…`) the zero-based ones of the file
// formats. Texts are views that live as long as the cells, and the shared arena, are kept.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/cell.h"
#include "spreadsheet/text_arena.h"

namespace korvex {

class SheetCells {
 public:
  struct Entry {
    int row;
    int column;
    CellValue value;
  };

  CellValue Value(int row, int column) const { return Value(RowOf(row), column); }

  // The same in two steps, for who reads many cells of a row.
  struct Row {
    std::uint32_t begin = 0;  // positions in the run of cells
    std::uint32_t end = 0;
  };
  Row RowOf(int row) const;
  CellValue Value(const Row& row, int column) const;
  CellAddress LastCell() const { return {static_cast<int>(last_row_) + 1, last_column_ + 1}; }
  // Cells of a row that are not empty.
  int CountA(int row) const;

  // All cells that are not empty, in row order.
  std::size_t Count() const { return cells_.size(); }
  Entry At(std::size_t index) const;

  // Starts anew and keeps the memory. Shared texts, if any, are ranges of `shared`, which must not
  // change any more.
  void Clear(const TextArena* shared = nullptr);
  // Cells may come in any order; of two at one place the later one counts, a blank too.
  void AddBlanks(std::uint32_t row, std::uint16_t first_column, int count);
  [[gnu::always_inline]] void AddNumber(std::uint32_t row, std::uint16_t column, CellKind kind,
                                        double number) {
    Add(row, column, kind, false, {.number = number});
  }
  void AddSharedText(std::uint32_t row, std::uint16_t column, TextRange text) {
    shown_text_ += text.length;
    Add(row, column, CellKind::kText, true, {.text = text});
  }
  void AddOwnText(std::uint32_t row, std::uint16_t column, TextRange text) {
    shown_text_ += text.length;
    Add(row, column, CellKind::kText, false, {.text = text});
  }
  // Gives the cell added last the text that its formula yields.
  void ReplaceLastText(TextRange text) {
    shown_text_ += text.length;
    cells_.back().content.text = text;
  }
  // Texts for AddOwnText.
  TextArena& OwnTexts() { return own_texts_; }
  // To be called once all cells are added. Error 1004 (a predicate, refusal.h) where few texts
  // stand in so many cells that whoever takes them cell by cell gets far more than was in the file.
  void Finish();
  std::size_t MemorySize() const;
  // What the cells themselves take of that.
  std::size_t UsedMemory() const { return cells_.size() * sizeof(Cell) + own_texts_.Size(); }

 private:
  union Content {
    double number;
    TextRange text;
  };
  struct Cell {
    std::uint32_t row;
    std::uint16_t column;
    CellKind kind;
    bool is_shared_text;
    Content content;
  };
  static_assert(sizeof(Cell) == 16);

  // Row and column as one number, in the order of the cells.
  static std::uint64_t Place(std::uint32_t row, std::uint16_t column) {
    return std::uint64_t{row} << 16 | column;
  }
  static std::uint64_t Place(const Cell& cell) { return Place(cell.row, cell.column); }
  // Every cell of every workbook goes through here.
  [[gnu::always_inline]] void Add(std::uint32_t row, std::uint16_t column, CellKind kind,
                                  bool is_shared_text, Content content) {
    const std::uint64_t place = Place(row, column);
    if (place >= next_place_) {
      next_place_ = place + 1;
    } else {
      GoBack();
    }
    cells_.push_back({row, column, kind, is_shared_text, content});
    last_column_ = std::max(last_column_, column);
  }
  void GoBack();
  Row FindRow(int row) const;
  void Order();
  CellValue View(const Cell& cell) const;

  std::vector<Cell> cells_;
  std::vector<std::uint32_t> row_starts_;  // by zero-based row, and one more; none of sparse cells
  const TextArena* shared_texts_ = nullptr;
  TextArena own_texts_;
  std::uint64_t shown_text_ = 0;  // bytes of all texts, as often as they were added
  std::uint64_t next_place_ = 0;  // behind the cells added so far
  bool is_ordered_ = true;
  std::size_t order_at_ = 0;    // cells at which a disorder is put right
  std::uint32_t last_row_ = 0;  // of blanks until Finish, then of all cells
  std::uint16_t last_column_ = 0;
};

inline SheetCells::Row SheetCells::RowOf(int row) const {
  if (row_starts_.empty()) return FindRow(row);
  if (row < 1 || static_cast<std::size_t>(row) >= row_starts_.size()) return {};
  const std::size_t index = static_cast<std::size_t>(row) - 1;
  return {row_starts_[index], row_starts_[index + 1]};
}

inline CellValue SheetCells::Value(const Row& row, int column) const {
  if (row.begin == row.end) return {};
  const Cell* const begin = cells_.data() + row.begin;
  const Cell* const end = cells_.data() + row.end;
  // In a row without gaps the cell stands where its column says.
  const int skipped = column - 1 - begin->column;
  if (skipped < 0) return {};
  if (skipped < end - begin && begin[skipped].column == column - 1) return View(begin[skipped]);
  const Cell* found = std::lower_bound(
      begin, end, column - 1, [](const Cell& cell, int wanted) { return cell.column < wanted; });
  return found != end && found->column == column - 1 ? View(*found) : CellValue();
}

inline CellValue SheetCells::View(const Cell& cell) const {
  if (cell.kind != CellKind::kText) return {cell.kind, cell.content.number, {}};
  const TextArena& arena = cell.is_shared_text ? *shared_texts_ : own_texts_;
  return CellValue::Text(arena.Text(cell.content.text));
}

}  // namespace korvex
