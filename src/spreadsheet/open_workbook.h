// Opens a workbook, whatever its format: the content decides, not the name.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

class FileSystem;

// Reads the whole of a file into `content`, once its beginning may be that of a workbook: what is
// none takes no memory however large it is, and is refused by what it is instead. Else the file
// system's errors.
void ReadWorkbookFile(const FileSystem& files, const std::string& path,
                      std::vector<std::byte>& content);

// Decides by the content of `buffers.file` what it is and opens it. The buffers must outlive the
// reader. What is no workbook is refused by what it is instead.
std::unique_ptr<WorkbookReader> OpenWorkbookReader(ReadBuffers& buffers);

}  // namespace korvex
