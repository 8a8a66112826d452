// Opens a workbook, whatever its format: the content decides, not the name.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

class FileSystem;

// Reads a file into `content`. A file that is no workbook is refused (refusal.h) after its
// beginning, by what it is instead, and so takes little memory however large it is. Other errors
// are the file system's.
void ReadWorkbookFile(const FileSystem& files, const std::string& path,
                      std::vector<std::byte>& content);

// Opens the workbook in `buffers.file`. The buffers must outlive the reader. Refuses a file that is
// no workbook, by what it is instead.
std::unique_ptr<WorkbookReader> OpenWorkbookReader(ReadBuffers& buffers);

}  // namespace korvex
