#include "spreadsheet/cells/cell_store.h"

#include <algorithm>

namespace korvex {

CellBlock* CellStore::FindBlock(int block, int column) const {
  const auto at = static_cast<std::size_t>(column);
  const auto part = static_cast<std::size_t>(block);
  if (at >= columns_.size() || part >= columns_[at].size()) return nullptr;
  return columns_[at][part].get();
}

StoredCell CellStore::At(int row, int column) const {
  const CellBlock* const block = Block(row / CellBlock::kRows, column);
  if (block == nullptr) return {};
  const auto at = static_cast<std::size_t>(row % CellBlock::kRows);
  if (block->kinds[at] == CellKind::kEmpty) return {};
  return {block->kinds[at], block->bits[at]};
}

void CellStore::Put(int row, int column, StoredCell cell) {
  const int number = row / CellBlock::kRows;
  const auto at = static_cast<std::size_t>(row % CellBlock::kRows);
  CellBlock* block = FindBlock(number, column);
  if (block == nullptr) {
    // A cell that was never filled needs no block to be empty.
    if (cell.kind == CellKind::kEmpty) return;
    block = &AddBlock(static_cast<std::size_t>(number), static_cast<std::size_t>(column));
  }
  block->kinds[at] = cell.kind;
  block->bits[at] = cell.bits;
}

// The kinds of a new block are all empty, so that its bits need no values yet.
CellBlock& CellStore::AddBlock(std::size_t block, std::size_t column) {
  if (column >= columns_.size()) columns_.resize(column + 1);
  Column& blocks = columns_[column];
  if (block >= blocks.size()) blocks.resize(block + 1);
  blocks[block] = std::make_unique_for_overwrite<CellBlock>();
  return *blocks[block];
}

void CellStore::DeleteColumn(int column) {
  if (column < ColumnCount()) columns_.erase(columns_.begin() + column);
}

// Columns are of different length: a block that one of them lacks is empty there.
int CellStore::BlockCount() const {
  std::size_t count = 0;
  for (const Column& column : columns_) count = std::max(count, column.size());
  return static_cast<int>(count);
}

// From the end: cells can have been emptied, and blocks in between may be missing.
int CellStore::RowEnd(int column) const {
  const Column& blocks = columns_[static_cast<std::size_t>(column)];
  for (auto block = static_cast<int>(blocks.size()); block-- > 0;) {
    const auto& part = blocks[static_cast<std::size_t>(block)];
    if (part == nullptr) continue;
    for (int row = CellBlock::kRows; row-- > 0;) {
      if (part->kinds[static_cast<std::size_t>(row)] == CellKind::kEmpty) continue;
      return block * CellBlock::kRows + row + 1;
    }
  }
  return 0;
}

bool CellStore::HasDates(int column) const {
  const Column& blocks = columns_[static_cast<std::size_t>(column)];
  return std::any_of(blocks.begin(), blocks.end(), [](const auto& block) {
    return block != nullptr && std::any_of(block->kinds.begin(), block->kinds.end(), IsDateKind);
  });
}

int CellStore::CountInRow(int row) const {
  int count = 0;
  for (int column = 0; column < ColumnCount(); ++column) {
    if (At(row, column).kind != CellKind::kEmpty) ++count;
  }
  return count;
}

std::uint64_t CellStore::Count(CellKind kind) const {
  std::uint64_t count = 0;
  for (const Column& column : columns_) {
    for (const auto& block : column) {
      if (block == nullptr) continue;
      count +=
          static_cast<std::uint64_t>(std::count(block->kinds.begin(), block->kinds.end(), kind));
    }
  }
  return count;
}

}  // namespace korvex
