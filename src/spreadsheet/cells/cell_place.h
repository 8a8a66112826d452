// Places of cells as formats made of XML, and messages, write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/cell.h"

namespace korvex {

// Zero-based.
struct CellPlace {
  std::uint32_t row;
  std::uint32_t column;
};

// What sheets of the formats made of XML hold.
inline constexpr std::uint32_t kMostXmlRows = 1048576;
inline constexpr std::uint32_t kMostXmlColumns = 16384;
inline constexpr CellAddress kLastXmlPlace = {kMostXmlRows, kMostXmlColumns};

// "B7" is row 6, column 1. Places too far out for any sheet may come out as others outside.
std::optional<CellPlace> ReadCellName(std::string_view name);
std::string CellName(CellPlace place);

// Of a value that lies where no sheet of its format reaches: left out, it would be lost in silence.
[[noreturn]] void RefuseOutside(CellPlace place);

}  // namespace korvex
