// Places of cells and their names ("B7"), as XML formats and messages write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/cell.h"
#include "workbook/sheet_rules.h"

namespace korvex {

// Zero-based.
struct CellPlace {
  std::uint32_t row;
  std::uint32_t column;
};

// What a sheet of an XML format holds.
inline constexpr std::uint32_t kMostXmlRows = kXlsxRows;
inline constexpr std::uint32_t kMostXmlColumns = kXlsxColumns;
inline constexpr CellAddress kLastXmlPlace = {kMostXmlRows, kMostXmlColumns};

// None unless the text is digits alone, and the number has 32 bits.
std::optional<std::uint32_t> ReadDigits(std::string_view text);

// "B7" is row 6, column 1; letter case does not matter. None for a text of another form. Of a place
// outside of every sheet the result is only that it is outside.
std::optional<CellPlace> ReadCellName(std::string_view name);
std::string CellName(CellPlace place);

// For a value at a place that no sheet of its format has: it must not be lost in silence.
[[noreturn, gnu::cold, gnu::noinline]] void RefuseOutside(CellPlace place);

}  // namespace korvex
