// Writes the sub-stream of one worksheet: its page set-up, rows and cells.
#pragma once

#include <cstdint>

#include "spreadsheet/cells/sheet_content.h"
#include "workbook/cell.h"

namespace korvex {

class ByteWriter;
class SharedStringWriter;

// Cell formats, as indices of the XF records of the globals.
enum class CellFormat : std::uint16_t { kGeneral = 15, kDateTime = 16, kDate = 17, kTime = 18 };

// The texts that cells use are numbered in `strings` as they come.
void WriteSheet(const SheetContent& sheet, SharedStringWriter& strings, ByteWriter& out);

}  // namespace korvex
