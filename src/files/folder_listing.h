// What lies directly in a folder, in ascending order of the upper-cased names (names that differ in
// letter case only, by their bytes), so that a run does the same on every machine.
//
// Raises the file system's error when the folder is missing (76) or cannot be listed (70, 75 …). A
// list is whole or is not given at all. What a run reads has no entry whose kind nobody can tell.
#pragma once

#include <string>
#include <vector>

#include "platform/file_system.h"

namespace korvex {

std::vector<FolderEntry> SortedEntries(const std::string& folder);
std::vector<std::string> SubFolderNames(const std::string& folder);
// The files, and the folders that are named like an .xls file: what somebody took for a workbook is
// refused by name when it is opened, not passed over in silence.
std::vector<std::string> WorkbookNames(const std::string& folder);

// The folder with the separator appended that it lacks at its end.
std::string WithSeparator(std::string folder);
// The full name of what lies in the folder under that name.
std::string JoinPath(const std::string& folder, const std::string& name);

}  // namespace korvex
