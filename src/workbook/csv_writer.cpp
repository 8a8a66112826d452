#include "workbook/csv_writer.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error.h"
#include "platform/file_system.h"
#include "text/text.h"
#include "workbook/cell_text.h"
#include "workbook/spreadsheet.h"

namespace korvex {
namespace {

constexpr std::size_t kBlock = 64 * 1024;  // bytes that are gathered before they are written
// Serial numbers from here on are dates. One below would be a day of the year 1900, long before any
// plate was read: it is a time.
constexpr double kFirstDate = 366;

bool IsTime(const CellValue& value) {
  return value.kind == CellKind::kDate && value.number < kFirstDate;
}

// By column, whether its times are elapsed ones: in some formats of the input nothing says so but a
// time of a day or more, which as a time of day makes no sense. Then all times of the column are
// elapsed, the short ones too.
std::vector<bool> FindElapsedTimes(const Worksheet& sheet, CellAddress last) {
  std::vector<bool> is_elapsed(static_cast<std::size_t>(last.column) + 1);
  for (int row = 1; row <= last.row; ++row) {
    for (int column = 1; column <= last.column; ++column) {
      const CellValue value = sheet.Value(row, column);
      if (IsTime(value) && value.number >= 1) is_elapsed[static_cast<std::size_t>(column)] = true;
    }
  }
  return is_elapsed;
}

void AppendField(const CellValue& value, std::string& out) {
  const std::size_t start = out.size();
  AppendDataText(value, out);
  if (out.find_first_of(",\"\r\n", start) == std::string::npos) return;
  // First the quotation marks inside are doubled, then the field gets its own.
  for (std::size_t quote = out.find('"', start); quote != std::string::npos;
       quote = out.find('"', quote + 2)) {
    out.insert(quote, 1, '"');
  }
  out.insert(start, 1, '"');
  out.push_back('"');
}

void WriteRecords(const Worksheet& sheet, ReplacementFile& file) {
  std::string block = "\xEF\xBB\xBF";  // byte order mark
  const auto flush = [&] {
    file.Write(std::as_bytes(std::span(block)));
    block.clear();
  };
  const CellAddress last = sheet.LastCell();
  const std::vector<bool> is_elapsed = FindElapsedTimes(sheet, last);
  for (int row = 1; row <= last.row; ++row) {
    for (int column = 1; column <= last.column; ++column) {
      if (column > 1) block.push_back(',');
      CellValue value = sheet.Value(row, column);
      if (is_elapsed[static_cast<std::size_t>(column)] && IsTime(value)) {
        value.kind = CellKind::kNumber;
      }
      AppendField(value, block);
    }
    block.append(kLineBreak);
    if (block.size() >= kBlock) flush();
  }
  flush();
}

}  // namespace

void WriteCsv(Workbook& workbook, ReplacementFile& file) {
  if (workbook.WorksheetCount() != 1) {
    throw Error(error_number::kAutomation, "A .csv file holds one sheet, and the workbook has " +
                                               std::to_string(workbook.WorksheetCount()) + ".");
  }
  WriteRecords(workbook.Worksheets(1), file);
}

}  // namespace korvex
