// The hash of a text for tables in memory.
//
// It differs from run to run: who writes an input file cannot make its texts meet in one place of a
// table, where each would be compared with all before it.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvex {

std::uint32_t HashOf(std::string_view text);

}  // namespace korvex
