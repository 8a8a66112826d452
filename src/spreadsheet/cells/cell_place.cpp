#include "spreadsheet/cells/cell_place.h"

#include <algorithm>
#include <limits>

#include "spreadsheet/bytes/refusal.h"
#include "text/text.h"

namespace korvex {

std::optional<std::uint32_t> ReadDigits(std::string_view text) {
  std::uint64_t number = 0;
  for (const char digit : text) {
    if (!IsAsciiDigit(digit)) return {};
    number = 10 * number + static_cast<std::uint64_t>(digit - '0');
    if (number > std::numeric_limits<std::uint32_t>::max()) return {};
  }
  if (text.empty()) return {};
  return static_cast<std::uint32_t>(number);
}

std::optional<CellPlace> ReadCellName(std::string_view name) {
  std::uint32_t column = 0;
  std::size_t letters = 0;
  for (; letters < name.size(); ++letters) {
    const auto digit = static_cast<std::uint32_t>((name[letters] | 0x20) - 'a');
    if (digit >= 26) break;
    // Any number of letters stays a column outside, without overflow.
    column = std::min(26 * column + digit + 1, kMostXmlColumns + 1);
  }
  if (letters == 0) return {};
  const std::optional<std::uint32_t> row = ReadDigits(name.substr(letters));
  if (!row || *row == 0) return {};
  return CellPlace{*row - 1, column - 1};
}

// Columns have letters, rows are counted from 1.
std::string CellName(CellPlace place) {
  return ColumnLetters(static_cast<int>(place.column) + 1) + std::to_string(place.row + 1);
}

void RefuseOutside(CellPlace place) {
  Refuse("is damaged: it has a value in cell " + CellName(place) + ", outside of every worksheet");
}

}  // namespace korvex
