#include "platform/file_system.h"

namespace korvex {

std::string LockedText(const std::string& path) {
  return "Cannot write to " + path + ": Another program keeps the file locked.";
}

std::string ParentFolder(const FileSystem& files, const std::string& path) {
  const std::string root = files.DriveName(path) + files.Separator();
  if (path.size() <= root.size()) return "";
  const std::size_t last = path.rfind(files.Separator());
  if (last == std::string::npos) return "";
  return last < root.size() ? root : path.substr(0, last);
}

void CreateFolders(FileSystem& files, const std::string& folder, FolderUse use) {
  if (folder.empty() || files.FolderExists(folder)) return;
  // From the top down: the first one that cannot be created is the one that the error names.
  CreateFolders(files, ParentFolder(files, folder), use);
  if (use == FolderUse::kPrivate) {
    files.CreatePrivateFolder(folder);
  } else {
    files.CreateFolder(folder);
  }
}

}  // namespace korvex
