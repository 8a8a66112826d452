// The workbook helpers that engine and structure share. Rows and columns are one-based.
#pragma once

#include <memory>
#include <string>

#include "workbook/spreadsheet.h"

namespace korvex {

// The name of the worksheet that holds the readings.
inline constexpr char kDataSheetName[] = "data";

// The worksheet "data"; error 9 when there is none.
Worksheet& GetDataSheet(Workbook& workbook);

// Activates the worksheet "data". Without one it tells the user and raises error 17; any other
// error is reported and goes no further.
void CheckSheetExists(Workbook& workbook);

// The last row that holds anything; 1 for an empty sheet.
int GetLastRow(const Worksheet& sheet);

// The lowest row whose first cell is not numeric (an empty cell counts as numeric), or 0 when every
// row is. Of a workbook, the sheet "data" is meant, once CheckSheetExists has looked for it.
int GetHeaderRow(const Worksheet& sheet);
int GetHeaderRow(Workbook& workbook);

// Deletes all worksheets but the last, which gets the name; an empty name leaves it its own.
Worksheet& KeepOneSheet(Workbook& workbook, const std::string& name);

// Ends a spreadsheet application, the embedded one as well as an installed one: closes every
// workbook without saving, quits the application and releases it. Never fails.
void QuitExcel(std::unique_ptr<Application>& application);

}  // namespace korvex
