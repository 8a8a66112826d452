// Workbooks read from bytes, with their cells as one line of text; and what a writer writes.
#pragma once

#include <memory>
#include <string>

#include "spreadsheet/bytes/byte_writer.h"
#include "spreadsheet/open_workbook.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/workbook_bytes.h"
#include "workbook/cell_text.h"

namespace korvex::test {

// "1,1 number 0.5 | 2,3 text abc | 4,1 uncalculated": row, column, kind and value of the cells that
// are not empty.
inline std::string Listing(const SheetCells& cells) {
  static constexpr const char* kKinds[] = {"empty", "number", "date", "boolean",
                                           "error", "text",   "date"};
  std::string listing;
  for (std::size_t i = 0; i < cells.Count(); ++i) {
    const SheetCells::Entry cell = cells.At(i);
    if (i > 0) listing += " | ";
    listing += std::to_string(cell.row) + ',' + std::to_string(cell.column) + ' ';
    if (cell.is_uncalculated) {
      listing += "uncalculated";
      continue;
    }
    listing += kKinds[static_cast<int>(cell.value.kind)] + (' ' + CellText(cell.value));
  }
  return listing;
}

class OpenedWorkbook {
 public:
  explicit OpenedWorkbook(const Bytes& file) {
    const auto* bytes = reinterpret_cast<const std::byte*>(file.data());
    buffers_.file.assign(bytes, bytes + file.size());
    reader_ = OpenWorkbookReader(buffers_);
  }

  const std::vector<SheetInfo>& Sheets() const { return reader_->Sheets(); }
  const SheetCells& Cells(std::size_t sheet = 0) {
    reader_->ReadSheet(sheet, buffers_.cells);
    return buffers_.cells;
  }

 private:
  ReadBuffers buffers_;
  std::unique_ptr<WorkbookReader> reader_;
};

inline std::string ListingOf(const Bytes& file) {
  return Listing(OpenedWorkbook(file).Cells());
}

// Cells of a BIFF8 sheet of these records, or of the version given.
inline std::string ListingOfRecords(const Bytes& records, const Bytes& globals = {},
                                    unsigned version = 0x0600) {
  return ListingOf(OneSheet(records, globals, version));
}

// Why a file is refused, or "" when its first sheet can be read.
inline std::string RefusalOf(const Bytes& file) {
  return ErrorOf([&] { ListingOf(file); }).Description();
}

// What `write` puts into a ByteWriter.
template <class Write>
std::string Written(Write write) {
  MemoryFileSystem files(PathStyle::kLinux);
  const std::unique_ptr<ReplacementFile> file = files.Replace("/file");
  ByteWriter out(*file);
  write(out);
  out.Flush();
  file->Commit();
  return files.Content("/file");
}

}  // namespace korvex::test
