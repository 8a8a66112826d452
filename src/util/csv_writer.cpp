#include "util/csv_writer.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/spreadsheet.h"
#include "util/cell_text.h"

namespace korvex {
namespace {

constexpr std::size_t kBlock = 64 * 1024;

void AppendField(const CellValue& value, std::string& out) {
  const std::size_t start = out.size();
  AppendDataText(value, out);
  if (out.find_first_of(",\"\r\n", start) == std::string::npos) return;
  for (std::size_t quote = out.find('"', start); quote != std::string::npos;
       quote = out.find('"', quote + 2)) {
    out.insert(quote, 1, '"');
  }
  out.insert(start, 1, '"');
  out.push_back('"');
}

void WriteRecords(const Worksheet& sheet, ReplacementFile& file) {
  std::string block = "\xEF\xBB\xBF";
  const auto flush = [&] {
    file.Write(std::as_bytes(std::span(block)));
    block.clear();
  };
  const CellAddress last = sheet.LastCell();
  for (int row = 1; row <= last.row; ++row) {
    for (int column = 1; column <= last.column; ++column) {
      if (column > 1) block.push_back(',');
      AppendField(sheet.Value(row, column), block);
    }
    block.append("\r\n");
    if (block.size() >= kBlock) flush();
  }
  flush();
}

}  // namespace

void SaveAsCsv(FileSystem& files, const std::string& target, Workbook& workbook) {
  if (workbook.WorksheetCount() != 1) {
    throw Error(error_number::kAutomation, "A .csv file holds one sheet, and the workbook has " +
                                               std::to_string(workbook.WorksheetCount()) + ".");
  }
  const std::unique_ptr<ReplacementFile> file = files.Replace(target);
  WriteRecords(workbook.Worksheets(1), *file);
  file->Commit();
}

}  // namespace korvex
