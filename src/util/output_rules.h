// What an output workbook may be called and what it may hold: the limits of the .xls format and a
// few rules for the user's sake, whichever spreadsheet application writes it. A broken rule is
// error 1004, which names the rule and what would help.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/cell.h"

namespace korvex {

class FileSystem;

// Refuses a name that ends like a spreadsheet format other than .xls: a program that trusts the
// ending could not open the file. Other endings, and none, will do.
void CheckOutputEnding(std::string_view file_name);

// The ending, and that the file is none of `inputs`, which would be lost.
void CheckOutputTarget(const FileSystem& files, const std::string& target,
                       const std::vector<std::string>& inputs);

// 1 to 31 UTF-16 units without \ / ? * [ ] :
void CheckSheetName(std::string_view name);
// How a refusal of that name begins.
std::string SheetNameRefusal(std::string_view name);

// Rows and columns count from 1.
void CheckCellPosition(int row, int column);
// Up to row 65,536 and column 256, texts of up to 32,767 UTF-16 units, finite numbers, error codes
// of one byte. `sheet` is the sheet's name.
void CheckOutputCell(const std::string& sheet, int row, int column, const CellValue& value);

// "A" for 1, "AA" for 27.
std::string ColumnLetters(int column);

}  // namespace korvex
