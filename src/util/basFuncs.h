// Paths for display, counting of files, and the workbook helpers that engine and structure share.
// Rows and columns are one-based.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/spreadsheet.h"

namespace korvex {

// Shortens a folder for display to drive, "\...\", parent and folder ("C:\...\Plates\Run1",
// "/.../Plates/Run1"); a root folder and a folder right below one stay as they are. `with_slash`
// makes sure of a separator at the end. Error 76 when the folder does not exist. For messages
// alone: control characters are escaped.
std::string ShortenPath(const std::string& path, bool with_slash);

// A file's full name with its folder shortened, the form in which messages name a workbook. Error
// 76 when its folder does not exist; a bare file name has none.
std::string GetDisplayPath(const std::string& full_name);

// Files in the folder and in all folders below it, those behind links to folders left out. Error 6
// beyond 32 bits. `on_folder` is called before each folder is listed, and may end the count by an
// error.
int CountFiles(const std::string& folder, const std::function<void()>& on_folder = {});

// Whether the file can be created or appended to, and if not, why. Leaves the disk as it was, and
// makes nothing under that name even for a moment.
bool FileIsWritable(const std::string& full_name, std::string* cause = nullptr);

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

// Closes every workbook without saving, quits the application and releases it. Never fails.
void QuitExcel(std::unique_ptr<Application>& application);

}  // namespace korvex
