// Writes an .xlsx workbook.
#pragma once

#include <vector>

#include "spreadsheet/cells/cell_store.h"

namespace korvex {

class FileSystem;
class ReplacementFile;
class TextPool;

// The workbook is put together in a scratch folder, a row at a time, and read back before `file`
// gets it: the library behind it does not see what a full disk swallows. The rows lie there twice
// for the moment, as plain text. Errors name the folder.
void WriteXlsx(FileSystem& files, const TextPool& texts, const std::vector<SheetContent>& sheets,
               ReplacementFile& file);

// Whether a scratch folder can be made at all: what a run would otherwise learn at its end.
void CheckXlsxFolder(FileSystem& files);

}  // namespace korvex
