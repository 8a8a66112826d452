// Reads a workbook as the program does, and checks what every reader promises about its cells.
#pragma once

#include <cstddef>
#include <span>

namespace korvex::fuzz {

// The file may be read or refused; anything else aborts.
void ReadWorkbook(std::span<const std::byte> file);

}  // namespace korvex::fuzz
