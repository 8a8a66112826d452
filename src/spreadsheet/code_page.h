// Single-byte texts of workbooks up to BIFF7, in the code page that the workbook names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "spreadsheet/text_arena.h"

namespace korvex {

inline constexpr std::uint16_t kDefaultCodePage = 1252;

// Appends `bytes` in the code page `number`, the value of a CODEPAGE record: a Windows or DOS page,
// 10000 or 32768 for Mac Roman, 32769 for 1252, 1200 or 21010 for UTF-16 where the text is not
// ASCII. Of a page that is not known (the double-byte ones) only ASCII is read. A byte without a
// character becomes U+FFFD.
void AppendCodePageText(std::uint16_t number, std::span<const std::byte> bytes, TextArena& out);

bool IsKnownCodePage(std::uint16_t number);

}  // namespace korvex
