// What an output workbook may be called and what it may hold, whichever spreadsheet application
// writes it: the limits of its format, and that it replaces none of its inputs. What breaks a rule
// is refused with error 1004, whose description says why and what to do.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error.h"
#include "workbook/cell.h"
#include "workbook/sheet_rules.h"

namespace korvex {

class FileSystem;

// What a sheet holds at most. There is one object a format: compare formats by their addresses.
struct OutputFormat {
  std::string_view ending;
  std::string_view larger_ending;  // of the format for what does not fit
  int rows;
  int columns;
  std::size_t characters;  // of a text, in UTF-16 units
  char separator = 0;      // of the fields, in a text file; 0 for a workbook
};
inline constexpr std::size_t kLongestCellText = 32'767;  // of .xls and .xlsx
inline constexpr OutputFormat kXlsFormat = {".xls", ".xlsx", kXlsRows, kXlsColumns,
                                            kLongestCellText};
inline constexpr OutputFormat kXlsxFormat = {".xlsx", ".csv", kXlsxRows, kXlsxColumns,
                                             kLongestCellText};
inline constexpr OutputFormat kCsvFormat = {".csv",
                                            "",
                                            std::numeric_limits<int>::max(),
                                            std::numeric_limits<int>::max(),
                                            std::numeric_limits<std::size_t>::max(),
                                            ','};
inline constexpr OutputFormat kTsvFormat = {
    ".tsv", "", kCsvFormat.rows, kCsvFormat.columns, kCsvFormat.characters, '\t'};

// The format that a file of that name gets: .xlsx, .csv and .tsv by the ending, .xls for any other
// and for none. Refuses a name that ends like a format that is not written: a program that trusts
// the ending could not open the file.
const OutputFormat& OutputFormatOf(std::string_view file_name);

// Checks the ending of the name, and that the file is none of `inputs`: an input would be lost.
void CheckOutputTarget(const FileSystem& files, const std::string& target,
                       const std::vector<std::string>& inputs);

// The error to raise when saving failed: 1004, which names the target and the cause. Error 58 (a
// file of that name exists) keeps its number.
Error SaveFailure(const std::string& target, const Error& cause);

// Rows and columns count from 1.
[[noreturn, gnu::cold]] void RefuseCellPosition(int row, int column);
inline void CheckCellPosition(int row, int column) {
  if (row < 1 || column < 1) RefuseCellPosition(row, column);
}
// Checks that a sheet of the format reaches that far.
void CheckOutputPlace(const OutputFormat& format, CellAddress place);
// Checks the place, the length of a text, that a number is finite and an error code one byte.
// `sheet` is the sheet's name.
void CheckOutputCell(const OutputFormat& format, const std::string& sheet, CellAddress place,
                     const CellValue& value);

}  // namespace korvex
