// What lies directly in a folder, in ascending order of the upper-cased names (names that differ in
// letter case only, by their bytes), so that a run does the same on every machine.
//
// Raises the file system's error when the folder is missing (76) or cannot be listed (70, 75 …). A
// list is whole or is not given at all.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace korvex {

std::vector<FolderEntry> SortedEntries(const std::string& folder);

// The folders of one run. Each is listed when it is first asked for, and only then: what a run
// counts, checks ahead and reads are the same files. A listing that failed is tried again.
class ListedFolders {
 public:
  // Sorted. The reference lasts as long as this object.
  const std::vector<FolderEntry>& Entries(const std::string& folder);

  // The names that a run goes through. Error 75 for a link that cannot be followed: it could be a
  // sub-folder or a workbook, and must not be left out because a share is away.
  std::vector<std::string> SubFolders(const std::string& folder);
  // The files, and the folders that are named like an .xls file: those are refused by name when
  // they are opened, since somebody took them for workbooks.
  std::vector<std::string> Workbooks(const std::string& folder);

 private:
  const std::vector<FolderEntry>& EntriesOfKnownKind(const std::string& folder);

  std::map<std::string, std::vector<FolderEntry>> entries_;
};

// The folder with a separator at its end, appended when there is none.
std::string WithSeparator(std::string folder);
// The full name of an entry of the folder.
std::string JoinPath(const std::string& folder, const std::string& name);

}  // namespace korvex
