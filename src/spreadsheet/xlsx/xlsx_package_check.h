// Reads a workbook that was just written once more.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korvex {

// Whether every part in the package is whole, and the rows of the worksheets have these many bytes.
// `path` is a file of the C library.
bool IsWholeXlsx(const std::string& path, const std::vector<std::uint64_t>& row_bytes);

}  // namespace korvex
