// Writes values as text files of records: comma-separated (.csv) or tab-separated (.tsv).
//
// By RFC 4180: a separator between fields, records ended by CR LF, a field in quotation marks when
// it holds a separator, a quotation mark or a line end, and a quotation mark in it doubled. The
// text is UTF-8 with a byte order mark: without one, common spreadsheet programs read it in a code
// page of theirs and show a wrong character for every "µ". Values are in their data form
// (AppendDataText); texts stand as they are, one that begins with "=", too.
#pragma once

#include <string>

#include "workbook/cell.h"

namespace korvex {

class ReplacementFile;
class Workbook;
struct OutputFormat;

// Writes one record after the other, in blocks. Errors are those of the file.
class DelimitedWriter {
 public:
  // `file` must outlive the writer; the caller commits it. `separator` is a comma or a tab.
  DelimitedWriter(ReplacementFile& file, char separator);

  void AddField(const CellValue& value);
  void EndRecord();
  // Hands over what has not been written yet; to be called once, after the last record.
  void Finish();

 private:
  ReplacementFile& file_;
  const char separator_;
  const std::string quoted_characters_;  // that make a field need quotation marks
  std::string block_;
  bool record_begun_ = false;
};

// Whether a value is a time as far as its number tells: as a date it would lie in the year 1900 or
// before, when nobody measured anything.
bool IsTimeWithoutDay(const CellValue& value);

// Writes the only sheet of the workbook in a format that has a separator; error 1004 when it has
// more. All records have as many fields. Elapsed times are numbers of days.
void WriteDelimited(Workbook& workbook, const OutputFormat& format, ReplacementFile& file);

}  // namespace korvex
