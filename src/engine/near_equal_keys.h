// Keys that a person would read as one: they differ in blanks alone, or in the leading zeros of a
// well ("A1", "A01", "A01 ").
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "engine/key_table.h"

namespace korvex {

// Pairs of keys, the earlier one first, in the order of the later ones. No pair is possible unless
// a value holds a blank (`key_columns` are the names that stand before the values), or
// `mixed_wells` says that wells with and without leading zeros were met: then nothing is looked at
// more closely.
std::vector<std::pair<std::uint32_t, std::uint32_t>> NearEqualKeys(
    const KeyTable& keys, const std::vector<std::string>& key_columns, bool mixed_wells);

}  // namespace korvex
