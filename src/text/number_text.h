// Numbers as text, in the shortest form that reads back as the same number.
#pragma once

#include <cstddef>

namespace korvex {

// More than the longest number takes.
inline constexpr std::size_t kLongestNumberText = 32;

// Writes a finite number as std::to_chars does, with an exponent where that is shorter, and returns
// the end. Numbers of few decimals, as nearly all data are, take a quicker way to the same text.
char* WriteNumber(double number, char* out);

}  // namespace korvex
