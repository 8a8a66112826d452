// Reads a workbook as the program does, and checks what every reader promises of its cells.
#pragma once

#include <cstddef>
#include <span>

namespace korvex::fuzz {

// A refusal is as good as a workbook; anything else that goes wrong aborts.
void ReadWorkbook(std::span<const std::byte> file);

}  // namespace korvex::fuzz
