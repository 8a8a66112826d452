// Reading workbooks: bytes of a file in, sheets of cells out, whatever the format.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/compound_file_reader.h"
#include "spreadsheet/shared_strings.h"
#include "spreadsheet/sheet_cells.h"

namespace korvex {

class FileSystem;

enum class SheetKind { kWorksheet, kChart, kMacro, kModule, kDialog };
enum class SheetState { kVisible, kHidden, kVeryHidden };

struct SheetInfo {
  std::string name;
  SheetKind kind = SheetKind::kWorksheet;
  SheetState state = SheetState::kVisible;
};

// The memory that reading a workbook takes, reused from workbook to workbook.
struct ReadBuffers {
  std::vector<std::byte> file;    // the file as it is on disk
  std::vector<std::byte> stream;  // its workbook stream, where that is in pieces
  CompoundBuffers compound;
  SharedStrings strings;
  SheetCells cells;
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

// Reads the whole of a file into `content`, once its beginning may be that of a workbook: what is
// none takes no memory however large it is, and is refused by what it is instead. Else the file
// system's errors.
void ReadWorkbookFile(const FileSystem& files, const std::string& path,
                      std::vector<std::byte>& content);

// Decides by the content of `buffers.file` what it is and opens it. The buffers must outlive the
// reader. What is no workbook is refused by what it is instead.
std::unique_ptr<WorkbookReader> OpenWorkbookReader(ReadBuffers& buffers);

}  // namespace korvex
