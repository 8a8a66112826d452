#include "files/folder_paths.h"

#include <string_view>

#include "files/folder_listing.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"

namespace korvex {
namespace {

// With separators at the ends, or "/data2" would lie in "/data".
bool IsWithin(const std::string& inner, const std::string& folder) {
  const std::string prefix = WithSeparator(folder);
  return IsSameName(WithSeparator(inner).substr(0, prefix.size()), prefix);
}

}  // namespace

// Where drives have letters, names are the same in any letter case.
bool IsSameName(const std::string& a, const std::string& b) {
  return Platform().files->Separator() == '\\' ? EqualText(a, b) : a == b;
}

std::string DriveOf(const std::string& folder, const std::vector<std::string>& drives) {
  std::string longest;
  for (const std::string& drive : drives) {
    if (drive.size() > longest.size() && IsWithin(folder, drive)) longest = drive;
  }
  return longest.empty() ? Platform().files->DriveName(folder) : longest;
}

std::vector<std::string> NamesBelow(const std::string& folder, const std::string& inner) {
  std::vector<std::string> names;
  if (!IsWithin(inner, folder)) return names;
  const char separator = Platform().files->Separator();
  const std::string way = WithSeparator(inner).substr(WithSeparator(folder).size());
  for (std::string& name : Split(way, std::string_view(&separator, 1))) {
    if (!name.empty()) names.push_back(std::move(name));
  }
  return names;
}

std::string NearestExistingFolder(std::string folder) {
  const FileSystem& files = *Platform().files;
  while (!folder.empty() && !files.FolderExists(folder)) folder = ParentFolder(files, folder);
  return folder.empty() ? files.DefaultFolder() : folder;
}

}  // namespace korvex
