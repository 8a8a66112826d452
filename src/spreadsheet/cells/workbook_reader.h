// The interface of the readers, one for each format: the bytes of a file in, the cells of sheets
// out.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/bytes/text_arena.h"
#include "spreadsheet/cells/sheet_cells.h"

namespace korvex {

enum class SheetKind { kWorksheet, kChart, kMacro, kModule, kDialog };

struct SheetInfo {
  std::string name;
  SheetKind kind = SheetKind::kWorksheet;
};

// What the reader of one format keeps from workbook to workbook, beside the buffers that all use.
class FormatBuffers {
 public:
  virtual ~FormatBuffers() = default;
  virtual std::size_t MemorySize() const = 0;
};

// The memory that reading a workbook takes; the next workbook uses it again.
struct ReadBuffers {
  std::vector<std::byte> file;  // the file as it is on disk
  SharedStrings strings;
  SheetCells cells;
  std::unique_ptr<FormatBuffers> format;  // of the reader that used the buffers last
  // Set by another thread when nobody wants the workbook any more; null where nobody can.
  std::shared_ptr<const std::atomic<bool>> given_up;
};

// An open workbook. What cannot be read is refused (refusal.h).
class WorkbookReader {
 public:
  virtual ~WorkbookReader() = default;

  // In the order of the workbook's tabs.
  virtual const std::vector<SheetInfo>& Sheets() const = 0;
  // The last place that a sheet of the format has.
  virtual CellAddress LastPlace() const = 0;
  // Replaces `cells` by the cells of a sheet, finished. `index` is zero-based; a chart has no
  // cells. Texts in `cells` are valid as long as the reader and its buffers.
  virtual void ReadSheet(std::size_t index, SheetCells& cells) = 0;
};

}  // namespace korvex
