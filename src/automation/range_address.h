// Ranges of cells by their addresses, as the object model spells them ("A1:J384").
#pragma once

#include <string>
#include <vector>

#include "workbook/cell.h"

namespace korvex {

// "A1:J384", or "A1" for a single cell.
std::string RangeAddress(CellAddress first, CellAddress last);

// Several ranges in one address ("A1:A9,C3"), in order. The object model takes an address of 255
// characters at most, so that many ranges come as more than one.
std::vector<std::string> JoinAddresses(const std::vector<std::string>& addresses);

}  // namespace korvex
