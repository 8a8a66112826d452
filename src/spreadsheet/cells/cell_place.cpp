#include "spreadsheet/cells/cell_place.h"

#include <algorithm>
#include <charconv>

#include "spreadsheet/bytes/refusal.h"

namespace korvex {

std::optional<CellPlace> ReadCellName(std::string_view name) {
  std::uint32_t column = 0;
  std::size_t letters = 0;
  for (; letters < name.size(); ++letters) {
    const auto digit = static_cast<std::uint32_t>((name[letters] | 0x20) - 'a');
    if (digit >= 26) break;
    // Any number of letters stays a column outside, without overflow.
    column = std::min(26 * column + digit + 1, kMostXmlColumns + 1);
  }
  std::uint32_t row = 0;
  const char* const end = name.data() + name.size();
  const auto [rest, error] = std::from_chars(name.data() + letters, end, row);
  if (letters == 0 || error != std::errc() || rest != end || row == 0) return {};
  return CellPlace{row - 1, column - 1};
}

// Columns have letters, rows are counted from 1.
std::string CellName(CellPlace place) {
  return ColumnLetters(static_cast<int>(place.column) + 1) + std::to_string(place.row + 1);
}

void RefuseOutside(CellPlace place) {
  Refuse("is damaged: it has a value in cell " + CellName(place) + ", outside of every worksheet");
}

}  // namespace korvex
