// What an .xlsx worksheet says about its cells before their rows come: how far they reach and how
// wide the columns are.
#pragma once

#include <cstdint>
#include <vector>

#include "spreadsheet/cells/cell_store.h"
#include "spreadsheet/cells/text_pool.h"

namespace korvex {

struct XlsxLayout {
  int rows = 0;  // up to the last one in use
  int columns = 0;
  bool has_headers = false;      // in the first row
  std::vector<int> widths;       // of the columns, in digits; 0 for the default width
  std::uint64_t most_bytes = 0;  // that the rows can take
};

XlsxLayout LayOut(const CellStore& cells, const TextPool& texts);

}  // namespace korvex
