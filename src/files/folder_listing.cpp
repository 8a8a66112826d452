#include "files/folder_listing.h"

#include <algorithm>
#include <utility>

#include "files/basGeneral.h"
#include "platform/error.h"
#include "platform/services.h"
#include "text/text.h"

namespace korvex {

std::vector<FolderEntry> SortedEntries(const std::string& folder) {
  std::vector<FolderEntry> entries = Platform().files->List(folder);
  std::sort(entries.begin(), entries.end(), [](const FolderEntry& a, const FolderEntry& b) {
    // Names that differ in letter case alone need an order of their own, the same on every machine.
    const int order = CompareText(a.name, b.name);
    return order != 0 ? order < 0 : a.name < b.name;
  });
  return entries;
}

const std::vector<FolderEntry>& ListedFolders::Entries(const std::string& folder) {
  const std::string key = WithSeparator(folder);  // one key for either spelling
  const auto known = entries_.find(key);
  if (known != entries_.end()) return known->second;
  return entries_.emplace(key, SortedEntries(folder)).first->second;
}

const std::vector<FolderEntry>& ListedFolders::EntriesOfKnownKind(const std::string& folder) {
  const std::vector<FolderEntry>& entries = Entries(folder);
  for (const FolderEntry& entry : entries) {
    if (entry.obstacle.empty()) continue;
    throw Error(error_number::kPathFileAccess,
                "Cannot list " + folder + ": " + entry.name +
                    " is a link that cannot be followed: " + entry.obstacle + ".");
  }
  return entries;
}

std::vector<std::string> ListedFolders::SubFolders(const std::string& folder) {
  std::vector<std::string> names;
  for (const FolderEntry& entry : EntriesOfKnownKind(folder)) {
    if (entry.is_folder) names.push_back(entry.name);
  }
  return names;
}

std::vector<std::string> ListedFolders::Workbooks(const std::string& folder) {
  // ".xls" alone is a name without an ending: hidden folders begin with a dot.
  const auto is_named_like_one = [](const std::string& name) {
    return EqualText(SharedFileSys().GetFileExtention(name, true, 3), ".xls") && name.size() > 4;
  };
  std::vector<std::string> names;
  for (const FolderEntry& entry : EntriesOfKnownKind(folder)) {
    if (!entry.is_folder || is_named_like_one(entry.name)) names.push_back(entry.name);
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
