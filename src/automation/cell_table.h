// The cells of one sheet in this process: those that were fetched, or are to be written.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "workbook/cell.h"

namespace korvex {

// Rows and columns count from 1. Owns its texts, equal ones once, and frees none before it ends:
// what At() returns stays valid for as long as the table lives.
class CellTable {
 public:
  // Empty anywhere outside.
  CellValue At(int row, int column) const;
  void Put(int row, int column, const CellValue& value);
  // The columns right of it move left.
  void DeleteColumn(int column);

  // How many cells of the row are not empty.
  int CountA(int row) const;
  // The bottom right corner of what is not empty; row 1, column 1 for an empty table.
  CellAddress LastCell() const;

 private:
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  using Row = std::vector<CellValue>;

  std::string_view Keep(std::string_view text);

  std::vector<Row> rows_;  // each up to its last filled cell, and some beyond
  std::unordered_set<std::string, Hash, std::equal_to<>> texts_;
};

}  // namespace korvex
