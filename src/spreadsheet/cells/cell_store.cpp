#include "spreadsheet/cells/cell_store.h"

#include <algorithm>

namespace korvex {

const CellBlock* CellStore::Block(int block, int column) const {
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
  const auto at_column = static_cast<std::size_t>(column);
  const auto at_block = static_cast<std::size_t>(row / CellBlock::kRows);
  const auto at = static_cast<std::size_t>(row % CellBlock::kRows);
  const bool exists = Block(row / CellBlock::kRows, column) != nullptr;
  // A cell that was never filled needs no block to be empty.
  if (!exists && cell.kind == CellKind::kEmpty) return;
  if (at_column >= columns_.size()) columns_.resize(at_column + 1);
  Column& blocks = columns_[at_column];
  if (at_block >= blocks.size()) blocks.resize(at_block + 1);
  if (!exists) blocks[at_block] = std::make_unique_for_overwrite<CellBlock>();
  blocks[at_block]->kinds[at] = cell.kind;
  blocks[at_block]->bits[at] = cell.bits;
}

void CellStore::DeleteColumn(int column) {
  if (column < ColumnCount()) columns_.erase(columns_.begin() + column);
}

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
