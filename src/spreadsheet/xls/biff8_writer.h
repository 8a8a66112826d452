// Writes the stream of a whole workbook in BIFF8: the globals, then the sheets.
#pragma once

#include <cstdint>
#include <vector>

#include "spreadsheet/bytes/byte_writer.h"
#include "spreadsheet/cells/cell_store.h"
#include "spreadsheet/xls/shared_string_writer.h"

namespace korvex {

// Cell formats, as indices of the XF records of the globals.
enum class CellFormat : std::uint16_t { kGeneral = 15, kDateTime = 16, kDate = 17, kTime = 18 };

// Writes the sub-stream of one worksheet (sheet_writer.cpp): its page set-up, rows and cells.
// `strings` numbers the texts in the order of the cells. `out` is a ByteWriter or a ByteCounter.
template <class Out>
void WriteSheet(const SheetContent& sheet, SharedStringWriter& strings, Out& out);

// The container's header comes before the stream and needs its size. So everything is written
// twice by the same code, the first time into a ByteCounter.
class Biff8Writer {
 public:
  // Measures the stream. The cells of the sheets and `texts` must outlive the writer and not
  // change. There is at least one sheet.
  Biff8Writer(const TextPool& texts, std::vector<SheetContent> sheets);

  std::uint64_t StreamSize() const { return stream_size_; }
  // Writes exactly StreamSize() bytes.
  void Write(ByteWriter& out);

 private:
  template <class Out>
  void WriteGlobals(Out& out);
  template <class Out>
  void WriteBoundSheets(Out& out) const;

  SharedStringWriter strings_;
  std::vector<SheetContent> sheets_;
  std::vector<std::uint64_t> sheet_sizes_;
  std::uint64_t text_cells_ = 0;
  std::uint64_t globals_size_ = 0;
  std::uint64_t stream_size_ = 0;
};

}  // namespace korvex
