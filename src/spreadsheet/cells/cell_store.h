// The cells of a sheet that is being built. They are stored by column and take nine bytes each.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "workbook/cell.h"

namespace korvex {

// `bits` are those of the double, or the id of the text (TextPool).
struct StoredCell {
  CellKind kind = CellKind::kEmpty;
  std::uint64_t bits = 0;
};

// 512 rows of a column. `bits` are meaningless where the kind is empty.
struct CellBlock {
  static constexpr int kRows = 512;

  std::array<CellKind, kRows> kinds{};
  std::array<std::uint64_t, kRows> bits;
};

// Rows and columns are zero-based and not negative; the caller checks the format's limits. A block
// of a column that was never filled takes no memory.
class CellStore {
 public:
  StoredCell At(int row, int column) const;
  void Put(int row, int column, StoredCell cell);
  // The columns to its right move left.
  void DeleteColumn(int column);

  // One past the last column that was ever filled.
  int ColumnCount() const { return static_cast<int>(columns_.size()); }
  // One past the last block of the longest column.
  int BlockCount() const;
  // The rows from `block` * kRows on; null when nothing was ever filled there.
  const CellBlock* Block(int block, int column) const { return FindBlock(block, column); }
  // One past the last row of a column that is not empty; 0 for an empty column.
  int RowEnd(int column) const;
  bool HasDates(int column) const;
  // How many cells of a row are not empty.
  int CountInRow(int row) const;
  std::uint64_t Count(CellKind kind) const;

 private:
  using Column = std::vector<std::unique_ptr<CellBlock>>;

  CellBlock* FindBlock(int block, int column) const;
  CellBlock& AddBlock(std::size_t block, std::size_t column);

  std::vector<Column> columns_;
};

// A sheet as the writers of all formats get it. `name` is UTF-8, `cells` are not owned.
struct SheetContent {
  std::string name;
  const CellStore* cells = nullptr;
  bool selected = false;
};

}  // namespace korvex
