#include <cstdint>
#include <limits>

#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "text/text.h"

namespace korvex {
namespace {

std::int64_t CountFilesBelow(const std::string& folder, const std::vector<FolderEntry>& entries,
                             const std::function<void()>& on_folder) {
  std::int64_t count = 0;
  for (const FolderEntry& entry : entries) {
    if (!entry.is_folder) {
      ++count;
    } else if (!entry.is_link) {  // a link could lead back to a folder above, without end
      if (on_folder) on_folder();
      const std::string inner = JoinPath(folder, entry.name);
      count += CountFilesBelow(inner, Platform().files->List(inner), on_folder);
    }
  }
  return count;
}

}  // namespace

// A root and a folder right below one keep the caller's spelling; others are written anew from
// their absolute path.
std::string ShortenPath(const std::string& path, bool with_slash) {
  const FileSystem& files = *Platform().files;
  if (!files.FolderExists(path)) {
    throw Error(error_number::kPathNotFound,
                StandardErrorText(error_number::kPathNotFound) + ": \"" + path + "\"");
  }
  // The share of a network folder counts as its drive; ".." is resolved before names are counted.
  const std::string absolute = files.AbsolutePath(path);
  const std::string drive = files.DriveName(absolute);
  const std::string separator(1, files.Separator());
  std::vector<std::string> names = Split(absolute.substr(drive.size()), separator);
  std::erase(names, "");

  std::string shortened = path;
  if (names.size() >= 2) {
    shortened =
        drive + separator + "..." + separator + names[names.size() - 2] + separator + names.back();
  }
  return Shown(with_slash ? WithSeparator(shortened) : shortened);
}

std::string GetDisplayPath(const std::string& full_name) {
  return ShortenPath(SharedFileSys().GetFilePath(full_name, true), true) +
         Shown(SharedFileSys().GetFileTitle(full_name, false));
}

int CountFiles(const std::string& folder, const std::function<void()>& on_folder) {
  if (on_folder) on_folder();
  return CountFiles(folder, Platform().files->List(folder), on_folder);
}

int CountFiles(const std::string& folder, const std::vector<FolderEntry>& entries,
               const std::function<void()>& on_folder) {
  const std::int64_t count = CountFilesBelow(folder, entries, on_folder);
  if (count > std::numeric_limits<std::int32_t>::max()) throw Error(error_number::kOverflow);
  return static_cast<int>(count);
}

bool FileIsWritable(const std::string& full_name, std::string* cause) {
  FileSystem& files = *Platform().files;
  try {
    // These two get their own words: the file system's would not say what is wrong.
    if (full_name.empty()) throw Error(error_number::kPathFileAccess, "There is no file name.");
    if (files.FolderExists(full_name)) {
      throw Error(error_number::kPathFileAccess, full_name + " is a folder.");
    }
    files.CheckWritable(full_name);
    return true;
  } catch (...) {
    if (cause != nullptr) *cause = PendingError().Description();
    return false;
  }
}

}  // namespace korvex
