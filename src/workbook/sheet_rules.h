// What holds for worksheets of every format: how far they reach, how their columns are called, and
// what their names may be. Rows and columns count from 1.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

// The last row and column of a sheet, by the format of the workbook.
inline constexpr int kXlsRows = 65'536;
inline constexpr int kXlsColumns = 256;
inline constexpr int kXlsxRows = 1'048'576;
inline constexpr int kXlsxColumns = 16'384;

// The run looks for headers up to this column, in sheets that end before it too.
inline constexpr int kLastHeaderColumn = 387;

// "A" for 1, "AA" for 27.
std::string ColumnLetters(int column);

// Error 1004 when a sheet cannot have that name: 1 to 31 UTF-16 units without \ / ? * [ ] : and
// control characters, without an apostrophe at either end, and not "History".
void CheckSheetName(std::string_view name);
// The start of the message that refuses a sheet name; the reason follows it.
std::string SheetNameRefusal(std::string_view name);

// A sheet name made of a folder's name: what a sheet name cannot hold, DEL and bytes that are no
// UTF-8 become "_", and the name is cut to 31 UTF-16 units without splitting a character.
// "History", which spreadsheet programs keep for themselves, becomes "History_". Empty for the root
// of a drive, which has no name.
std::string SheetNameFromFolder(std::string_view folder_name);

}  // namespace korvex
