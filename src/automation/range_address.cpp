#include "automation/range_address.h"

#include <cstddef>

#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr std::size_t kLongestAddress = 255;

std::string CellName(CellAddress cell) {
  return ColumnLetters(cell.column) + std::to_string(cell.row);
}

}  // namespace

std::string RangeAddress(CellAddress first, CellAddress last) {
  return first == last ? CellName(first) : CellName(first) + ":" + CellName(last);
}

std::vector<std::string> JoinAddresses(const std::vector<std::string>& addresses) {
  std::vector<std::string> joined;
  for (const std::string& address : addresses) {
    if (joined.empty() || joined.back().size() + 1 + address.size() > kLongestAddress) {
      joined.push_back(address);
    } else {
      joined.back() += "," + address;
    }
  }
  return joined;
}

}  // namespace korvex
