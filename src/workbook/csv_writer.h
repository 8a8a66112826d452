// Writes a workbook as comma-separated values.
//
// By RFC 4180: fields between commas, records ended by CR LF, a field in quotation marks when it
// holds a comma, a quotation mark or a line end, and a quotation mark in it doubled. The text is
// UTF-8 with a byte order mark: without one, common spreadsheet programs read it in a code page of
// theirs and show a wrong character for every "µ". Values are in their data form (AppendDataText),
// but for elapsed times, which are numbers of days; texts stand as they are, one that begins with
// "=", too. All records have as many fields.
#pragma once

namespace korvex {

class ReplacementFile;
class Workbook;

// Writes the only sheet of the workbook; error 1004 when it has more. Otherwise the errors of the
// file.
void WriteCsv(Workbook& workbook, ReplacementFile& file);

}  // namespace korvex
