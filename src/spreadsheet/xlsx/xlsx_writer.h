// Writes an .xlsx workbook.
#pragma once

#include <vector>

#include "spreadsheet/cells/cell_store.h"

namespace korvex {

class FileSystem;
class ReplacementFile;
class TextPool;

// The workbook is made in a scratch folder, row by row, and checked there before it is copied into
// `file`: the library that makes it ignores write errors. For a while the folder holds the rows
// twice, as plain text. Errors name the folder.
void WriteXlsx(FileSystem& files, const TextPool& texts, const std::vector<SheetContent>& sheets,
               ReplacementFile& file);

// Throws if no scratch folder can be made, so that a run need not find out at its end.
void CheckXlsxFolder(FileSystem& files);

}  // namespace korvex
