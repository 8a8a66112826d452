// The hash of a text for tables in memory.
//
// It differs from run to run. Otherwise somebody could write an input file whose texts all fall
// into one slot of a table, where finding one means comparing it with all the others.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvex {

std::uint32_t HashOf(std::string_view text);

}  // namespace korvex
