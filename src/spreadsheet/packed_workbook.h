// Workbooks in a zip archive, told apart by the parts that the archive has.
#pragma once

#include <memory>

#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

// Opens the .xlsx or .ods workbook that `buffers.file`, a zip archive, is. Everything else is
// refused by what it is.
std::unique_ptr<WorkbookReader> OpenPackedWorkbook(ReadBuffers& buffers);

}  // namespace korvex
