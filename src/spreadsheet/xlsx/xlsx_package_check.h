// Checks an .xlsx file that was just written, because the library that writes it ignores write
// errors.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korvex {

// Whether every part of the package is whole and the rows of the n-th worksheet take row_bytes[n]
// bytes. `path` is one for fopen.
bool IsWholeXlsx(const std::string& path, const std::vector<std::uint64_t>& row_bytes);

}  // namespace korvex
