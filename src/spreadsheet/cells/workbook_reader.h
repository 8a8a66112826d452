// Reading workbooks: bytes of a file in, sheets of cells out, whatever the format.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/cells/shared_strings.h"
#include "spreadsheet/cells/sheet_cells.h"

namespace korvex {

enum class SheetKind { kWorksheet, kChart, kMacro, kModule, kDialog };
enum class SheetState { kVisible, kHidden, kVeryHidden };

struct SheetInfo {
  std::string name;
  SheetKind kind = SheetKind::kWorksheet;
  SheetState state = SheetState::kVisible;
};

// What the reader of one format keeps from workbook to workbook, beside the buffers of all.
class FormatBuffers {
 public:
  virtual ~FormatBuffers() = default;
  virtual std::size_t MemorySize() const = 0;
};

// The memory that reading a workbook takes, reused from workbook to workbook.
struct ReadBuffers {
  std::vector<std::byte> file;  // the file as it is on disk
  SharedStrings strings;
  SheetCells cells;
  std::unique_ptr<FormatBuffers> format;  // of the reader that used the buffers last
};

// An open workbook. A reader for one format derives from it. Refusals are Errors 1004 whose
// description is a predicate (refusal.h).
class WorkbookReader {
 public:
  virtual ~WorkbookReader() = default;

  // In the order of the workbook's tabs.
  virtual const std::vector<SheetInfo>& Sheets() const = 0;
  // The last place that a sheet of the format has.
  virtual CellAddress LastPlace() const = 0;
  // Replaces the content of `cells` by those of a sheet, zero-based; a chart has none. Texts in
  // `cells` need the reader and its buffers alive.
  virtual void ReadSheet(std::size_t index, SheetCells& cells) = 0;
};

}  // namespace korvex
