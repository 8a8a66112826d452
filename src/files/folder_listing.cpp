#include "files/folder_listing.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/services.h"
#include "text/text.h"

namespace korvex {

std::vector<FolderEntry> SortedEntries(const std::string& folder) {
  std::vector<FolderEntry> entries = Platform().files->List(folder);
  std::sort(entries.begin(), entries.end(), [](const FolderEntry& a, const FolderEntry& b) {
    const int order = CompareText(a.name, b.name);
    return order != 0 ? order < 0 : a.name < b.name;
  });
  return entries;
}

namespace {

// A run must not pass over a sub-folder, nor take it for a workbook, because a share is away.
std::vector<FolderEntry> KnownEntries(const std::string& folder) {
  std::vector<FolderEntry> entries = SortedEntries(folder);
  for (const FolderEntry& entry : entries) {
    if (entry.obstacle.empty()) continue;
    throw Error(error_number::kPathFileAccess,
                "Cannot list " + folder + ": " + entry.name +
                    " is a link that cannot be followed: " + entry.obstacle + ".");
  }
  return entries;
}

}  // namespace

std::vector<std::string> SubFolderNames(const std::string& folder) {
  std::vector<std::string> names;
  for (FolderEntry& entry : KnownEntries(folder)) {
    if (entry.is_folder) names.push_back(std::move(entry.name));
  }
  return names;
}

std::vector<std::string> WorkbookNames(const std::string& folder) {
  std::vector<std::string> names;
  for (FolderEntry& entry : KnownEntries(folder)) {
    const bool like_a_workbook =
        entry.name.size() > 4 &&
        EqualText(std::string_view(entry.name).substr(entry.name.size() - 4), ".xls");
    if (!entry.is_folder || like_a_workbook) names.push_back(std::move(entry.name));
  }
  return names;
}

std::string WithSeparator(std::string folder) {
  const char separator = Platform().files->Separator();
  if (!folder.ends_with(separator)) folder.push_back(separator);
  return folder;
}

std::string JoinPath(const std::string& folder, const std::string& name) {
  return WithSeparator(folder) + name;
}

}  // namespace korvex
