// A folder of its own for one test, and the few raw file operations that tests check results with.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_path.h"

namespace korvex {

// Whatever names a test has made.
inline void RemoveTree(const std::string& folder) {
  for (const FolderEntry& entry : WindowsFileSystem().List(folder)) {
    const std::string path = folder + "\\" + entry.name;
    const std::wstring system_path = SystemPath(path);
    SetFileAttributesW(system_path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (entry.is_folder && !entry.is_link) RemoveTree(path);
    if (!DeleteFileW(system_path.c_str())) RemoveDirectoryW(system_path.c_str());
  }
  RemoveDirectoryW(SystemPath(folder).c_str());
}

class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    path_ = FromWide((std::filesystem::temp_directory_path() / "korvex-test-").wstring()) +
            std::to_string(random());
    std::filesystem::create_directory(ToWide(path_));
  }
  ~TempFolder() { RemoveTree(path_); }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& Path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "\\" + name; }

  std::string Put(const std::string& name, const std::string& content) const {
    const std::string path = *this / name;
    std::ofstream(std::filesystem::path(ToWide(path)), std::ios::binary) << content;
    return path;
  }
  std::size_t EntryCount() const {
    const std::filesystem::directory_iterator entries(ToWide(path_));
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }

 private:
  std::string path_;
};

inline std::string Content(const std::string& path) {
  std::ifstream file(std::filesystem::path(ToWide(path)), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace korvex
