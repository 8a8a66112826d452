// Writes the sub-stream of one worksheet: its page set-up, rows and cells.
#pragma once

#include <cstdint>
#include <string>

#include "platform/cell.h"

namespace korvex {

class ByteWriter;
class CellStore;
class SharedStringWriter;

// Cell formats, as indices of the XF records of the globals.
enum class CellFormat : std::uint16_t { kGeneral = 15, kDateTime = 16, kDate = 17, kTime = 18 };

// Not owned. `name` is UTF-8.
struct SheetContent {
  std::string name;
  const CellStore* cells = nullptr;
  bool selected = false;
};

// The texts that cells use are numbered in `strings` as they come.
void WriteSheet(const SheetContent& sheet, SharedStringWriter& strings, ByteWriter& out);

}  // namespace korvex
