// The cells of one sheet in memory, whatever format they were read from.
//
// The values are one array ordered by row and column. Formatted blanks are not stored, but count
// for the last cell. Reading uses one-based rows and columns, filling (`Add…`) the zero-based ones
// of the file formats. Texts are views, valid as long as the cells and the shared arena are.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/growing_array.h"
#include "spreadsheet/bytes/read_budget.h"
#include "spreadsheet/bytes/text_arena.h"
#include "spreadsheet/cells/cell_place.h"
#include "workbook/cell.h"

namespace korvex {

// Why the stored result of a formula may be one that no program calculated.
enum class DoubtGround : std::uint8_t {
  kAsksForCalculation,  // the workbook asks to be calculated when it is opened
  kEmptyText,           // the result is the empty text
};

class SheetCells {
 public:
  struct Entry {
    int row;
    int column;
    CellValue value;
    bool is_uncalculated;
  };

  CellValue Value(int row, int column) const { return Value(RowOf(row), column); }

  // The same in two steps, for callers that read many cells of a row.
  struct Row {
    std::uint32_t begin = 0;  // positions in the array of cells
    std::uint32_t end = 0;
  };
  Row RowOf(int row) const;
  CellValue Value(const Row& row, int column) const;
  void Values(const Row& row, std::span<const int> columns, std::span<CellValue> values) const;
  // Whether a cell has a formula that was never calculated. Its value is #N/A and must not be used.
  bool IsUncalculated(int row, int column) const {
    return has_uncalculated_ && HasUncalculatedAt(row, column);
  }
  bool HasUncalculated() const { return has_uncalculated_; }
  // The last row and the last column that hold anything, formatted blanks included; (1, 1) for an
  // empty sheet.
  CellAddress LastCell() const { return {static_cast<int>(last_row_) + 1, last_column_ + 1}; }
  // Cells of a row that are not empty.
  int CountA(int row) const;

  // All cells that are not empty, in row order.
  std::size_t Count() const { return cells_.size(); }
  Entry At(std::size_t index) const;

  // What a second cell at one place means. In .xls files it happens, and programs read the later
  // one.
  enum class Repeats { kLaterCounts, kAreDamage };

  // Removes all cells and keeps the memory. Shared texts are ranges of `shared`, which must not
  // change afterwards.
  void Clear(const TextArena* shared = nullptr, Repeats repeats = Repeats::kLaterCounts);
  // Cells may come in any order. Of two at one place the later one counts, even a blank, or the
  // sheet is refused, here or in Finish.
  void AddBlanks(std::uint32_t row, std::uint16_t first_column, int count);
  [[gnu::always_inline]] void AddNumber(std::uint32_t row, std::uint16_t column, CellKind kind,
                                        double number) {
    Add(row, column, kind, false, {.number = number});
  }
  [[gnu::always_inline]] void AddSharedText(std::uint32_t row, std::uint16_t column,
                                            TextRange text) {
    shown_text_ += text.length;
    Add(row, column, CellKind::kText, true, {.text = text});
  }
  void AddOwnText(std::uint32_t row, std::uint16_t column, TextRange text) {
    shown_text_ += text.length;
    Add(row, column, CellKind::kText, false, {.text = ShareText(column, text)});
  }
  // Gives the cell added last the text that is the result of its formula.
  void ReplaceLastText(TextRange text) {
    shown_text_ += text.length;
    cells_.back().content.text = ShareText(cells_.back().column, text);
  }
  // The cell added last has a formula, and `ground` is a reason to doubt its result; `is_zero` when
  // the result is zero or empty. One other result shows that somebody did calculate. So the doubts
  // of one ground are decided together, at the end: if HasOnlyDoubts, and if the caller is certain,
  // ConfirmDoubts marks all of them as never calculated.
  void DoubtLast(DoubtGround ground, bool is_zero) {
    Doubts& doubts = doubts_[static_cast<std::size_t>(ground)];
    doubts.has_zeros |= is_zero;
    doubts.has_others |= !is_zero;
    cells_.back().is_doubted_request = is_zero && ground == DoubtGround::kAsksForCalculation;
    cells_.back().is_doubted_text = is_zero && ground == DoubtGround::kEmptyText;
  }
  bool HasOnlyDoubts(DoubtGround ground) const {
    const Doubts& doubts = doubts_[static_cast<std::size_t>(ground)];
    return doubts.has_zeros && !doubts.has_others;
  }
  void ConfirmDoubts(DoubtGround ground);
  // The cell added last has a formula and no result.
  void LoseLast() { MarkUncalculated(cells_.back()); }
  // Whether no cell was added yet; if one was, the place of the last one in the order of the sheet.
  bool IsUnfilled() const { return next_place_ == 0; }
  CellPlace LastAdded() const {
    return {static_cast<std::uint32_t>((next_place_ - 1) >> 16),
            static_cast<std::uint16_t>(next_place_ - 1)};
  }
  // The arena of the texts for AddOwnText.
  TextArena& OwnTexts() { return own_texts_; }
  // A text repeated in every row of a column is stored once. Returns the text that the column had
  // last if it equals `text`, and removes `text` from the arena if it stands at its end; else
  // returns `text`.
  TextRange ShareText(std::uint16_t column, TextRange text);
  // Call it once all cells are added. Refuses a sheet that shows more text than `budget` allows.
  void Finish(const ReadBudget& budget);
  std::size_t MemorySize() const;
  // The part of that in use, without spare capacity and indices.
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
    bool is_shared_text : 1;
    bool is_uncalculated : 1;
    // Doubts, one bit for each ground.
    bool is_doubted_request : 1;
    bool is_doubted_text : 1;
    Content content;
  };
  static_assert(sizeof(Cell) == 16);

  // Row and column as one number, in the order of the cells.
  static std::uint64_t Place(std::uint32_t row, std::uint16_t column) {
    return std::uint64_t{row} << 16 | column;
  }
  static std::uint64_t Place(const Cell& cell) { return Place(cell.row, cell.column); }
  // Inlined: every cell of every workbook is added here.
  [[gnu::always_inline]] void Add(std::uint32_t row, std::uint16_t column, CellKind kind,
                                  bool is_shared_text, Content content) {
    const std::uint64_t place = Place(row, column);
    if (place >= next_place_) {
      next_place_ = place + 1;
    } else {
      GoBack();
    }
    last_column_ = std::max(last_column_, column);
    cells_.push_back({row, column, kind, is_shared_text, false, false, false, content});
  }
  void GoBack();
  void MarkUncalculated(Cell& cell);
  // Null for an empty cell.
  const Cell* Find(const Row& row, int column) const;
  // The rare cases of the look-ups, out of line: the common ones run for every cell that is read.
  const Cell* FindAmongGaps(const Row& row, int column) const;
  bool HasUncalculatedAt(int row, int column) const;
  Row FindRow(int row) const;
  void Order();
  CellValue View(const Cell& cell) const;

  GrowingArray<Cell> cells_;
  GrowingArray<std::uint32_t>
      row_starts_;  // by zero-based row, and the end; empty for sparse cells
  const TextArena* shared_texts_ = nullptr;
  TextArena own_texts_;
  std::vector<TextRange> texts_above_;  // by column, its last own text
  std::uint64_t shown_text_ = 0;        // bytes of all texts, as often as they were added
  std::uint64_t next_place_ = 0;        // after the cells added so far
  Repeats repeats_ = Repeats::kLaterCounts;
  bool is_ordered_ = true;
  struct Doubts {
    bool has_zeros = false;
    bool has_others = false;
  };
  std::array<Doubts, 2> doubts_;  // by ground
  bool has_uncalculated_ = false;
  std::size_t order_at_ = 0;    // number of cells from which on GoBack sorts
  std::uint32_t last_row_ = 0;  // of blanks until Finish, then of all cells
  std::uint16_t last_column_ = 0;
};

inline SheetCells::Row SheetCells::RowOf(int row) const {
  if (row_starts_.empty()) return FindRow(row);
  if (row < 1 || static_cast<std::size_t>(row) >= row_starts_.size()) return {};
  const std::size_t index = static_cast<std::size_t>(row) - 1;
  return {row_starts_[index], row_starts_[index + 1]};
}

inline const SheetCells::Cell* SheetCells::Find(const Row& row, int column) const {
  if (row.begin == row.end) return nullptr;
  const Cell* const begin = cells_.data() + row.begin;
  const Cell* const end = cells_.data() + row.end;
  // In a row without gaps the cell stands where its column says.
  const int skipped = column - 1 - begin->column;
  if (skipped < 0) return nullptr;
  if (skipped < end - begin && begin[skipped].column == column - 1) return &begin[skipped];
  return FindAmongGaps(row, column);
}

inline CellValue SheetCells::Value(const Row& row, int column) const {
  const Cell* const cell = Find(row, column);
  return cell != nullptr ? View(*cell) : CellValue();
}

inline void SheetCells::Values(const Row& row, std::span<const int> columns,
                               std::span<CellValue> values) const {
  const std::uint32_t count = row.end - row.begin;
  const Cell* const begin = cells_.data() + row.begin;
  const bool has_gaps = count == 0 || begin[count - 1].column - begin->column + 1u != count;
  CellValue* value = values.data();
  if (has_gaps) {
    for (const int column : columns) *value++ = Value(row, column);
    return;
  }
  const std::uint32_t first = begin->column + 1u;
  for (const int column : columns) {
    const std::uint32_t skipped = static_cast<std::uint32_t>(column) - first;
    *value++ = skipped < count ? View(begin[skipped]) : CellValue();
  }
}

inline CellValue SheetCells::View(const Cell& cell) const {
  if (cell.kind != CellKind::kText) return {cell.kind, cell.content.number, {}};
  const TextArena& arena = cell.is_shared_text ? *shared_texts_ : own_texts_;
  return CellValue::Text(arena.Text(cell.content.text));
}

}  // namespace korvex
