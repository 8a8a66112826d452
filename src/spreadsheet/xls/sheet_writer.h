// Writes the sub-stream of one worksheet: its page set-up, rows and cells.
#pragma once

#include <cstdint>

#include "spreadsheet/cells/cell_store.h"
#include "workbook/cell.h"

namespace korvex {

class ByteWriter;
class SharedStringWriter;

// Cell formats, as indices of the XF records of the globals.
enum class CellFormat : std::uint16_t { kGeneral = 15, kDateTime = 16, kDate = 17, kTime = 18 };

// `strings` numbers the texts in the order of the cells.
void WriteSheet(const SheetContent& sheet, SharedStringWriter& strings, ByteWriter& out);

}  // namespace korvex
