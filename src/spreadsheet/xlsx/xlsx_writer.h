// Writes an .xlsx workbook, and checks what was written (xlsx_package_check.cpp).
#pragma once

#include <cstdint>
#include <string>
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

// Whether every part of the package at `path`, a path for fopen, is whole and the rows of the n-th
// worksheet take row_bytes[n] bytes.
bool IsWholeXlsx(const std::string& path, const std::vector<std::uint64_t>& row_bytes);

// Throws if no scratch folder can be made, so that a run need not find out at its end.
void CheckXlsxFolder(FileSystem& files);

}  // namespace korvex
