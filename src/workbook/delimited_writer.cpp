#include "workbook/delimited_writer.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/file_system.h"
#include "text/text.h"
#include "workbook/cell_text.h"
#include "workbook/output_rules.h"
#include "workbook/spreadsheet.h"

namespace korvex {
namespace {

constexpr std::size_t kBlock = 64 * 1024;  // bytes that are gathered before they are written
// Serial numbers from here on are dates. One below would be a day of the year 1900, long before any
// plate was read: it is a time.
constexpr double kFirstDate = 366;

// By column, whether its times are elapsed ones: in some formats of the input nothing says so but a
// time of a day or more, which as a time of day makes no sense. Then all times of the column are
// elapsed, the short ones too.
std::vector<bool> FindElapsedTimes(const Worksheet& sheet, CellAddress last) {
  std::vector<bool> is_elapsed(static_cast<std::size_t>(last.column) + 1);
  for (int row = 1; row <= last.row; ++row) {
    for (int column = 1; column <= last.column; ++column) {
      const CellValue value = sheet.Value(row, column);
      const bool is_longer = IsTimeWithoutDay(value) && value.number >= 1;
      if (is_longer) is_elapsed[static_cast<std::size_t>(column)] = true;
    }
  }
  return is_elapsed;
}

}  // namespace

bool IsTimeWithoutDay(const CellValue& value) {
  return value.kind == CellKind::kDate && value.number < kFirstDate;
}

DelimitedWriter::DelimitedWriter(ReplacementFile& file, char separator)
    : file_(file),
      separator_(separator),
      quoted_characters_({separator, '"', '\r', '\n'}),
      block_("\xEF\xBB\xBF") {}

void DelimitedWriter::AddField(const CellValue& value) {
  if (record_begun_) block_.push_back(separator_);
  record_begun_ = true;
  const std::size_t start = block_.size();
  AppendDataText(value, block_);
  if (block_.find_first_of(quoted_characters_, start) == std::string::npos) return;
  // First the quotation marks inside are doubled, then the field gets its own.
  for (std::size_t quote = block_.find('"', start); quote != std::string::npos;
       quote = block_.find('"', quote + 2)) {
    block_.insert(quote, 1, '"');
  }
  block_.insert(start, 1, '"');
  block_.push_back('"');
}

void DelimitedWriter::EndRecord() {
  block_.append(kLineBreak);
  record_begun_ = false;
  if (block_.size() >= kBlock) Finish();
}

void DelimitedWriter::Finish() {
  file_.Write(std::as_bytes(std::span(block_)));
  block_.clear();
}

void WriteDelimited(Workbook& workbook, const OutputFormat& format, ReplacementFile& file) {
  if (workbook.WorksheetCount() != 1) {
    throw Error(error_number::kAutomation, "A " + std::string(format.ending) +
                                               " file holds one sheet, and the workbook has " +
                                               std::to_string(workbook.WorksheetCount()) + ".");
  }
  const Worksheet& sheet = workbook.Worksheets(1);
  const CellAddress last = sheet.LastCell();
  const std::vector<bool> is_elapsed = FindElapsedTimes(sheet, last);
  DelimitedWriter writer(file, format.separator);
  for (int row = 1; row <= last.row; ++row) {
    for (int column = 1; column <= last.column; ++column) {
      CellValue value = sheet.Value(row, column);
      if (is_elapsed[static_cast<std::size_t>(column)] && IsTimeWithoutDay(value)) {
        value.kind = CellKind::kNumber;
      }
      writer.AddField(value);
    }
    writer.EndRecord();
  }
  writer.Finish();
}

}  // namespace korvex
