// Writes an .xlsx workbook.
#pragma once

#include <vector>

#include "spreadsheet/cells/cell_store.h"

namespace korvex {

class ReplacementFile;
class TextPool;

// The rows are packed on another thread while they are made, and go into the file as they are
// packed. Equal content gives equal bytes, with the thread and without. Errors of the file pass
// through.
//
// A sheet whose first row holds anything has it as its header row: it stays in view, and has a
// filter over what is below.
void WriteXlsx(const TextPool& texts, const std::vector<SheetContent>& sheets,
               ReplacementFile& file);

}  // namespace korvex
