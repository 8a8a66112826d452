// The file system of this machine in a folder of the test's own.
#pragma once

#include <gmock/gmock.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"
#include "platform/native_platform.h"
#include "tests/platform/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {

class FileSystemFixture : public testing::Test {
 protected:
  std::string Read(const std::string& path) {
    files_.ReadFile(path, content_);
    return {reinterpret_cast<const char*>(content_.data()), content_.size()};
  }
  static void Write(ReplacementFile& file, std::string_view text) {
    file.Write(std::as_bytes(std::span(text)));
  }
  void Save(const std::string& path, std::string_view content) {
    const auto file = files_.Replace(path);
    Write(*file, content);
    file->Commit();
  }
  std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const FolderEntry& entry : files_.List(folder)) names.push_back(entry.name);
    return names;
  }
  int NumberOfReplacing(const std::string& path) {
    return ErrorOf([&] { files_.Replace(path); }).Number();
  }
  int NumberOfAppending(const std::string& path) {
    return ErrorOf([&] { files_.OpenForAppending(path); }).Number();
  }

  NativePlatform native_;
  FileSystem& files_ = *native_.Provided().files;
  TempFolder folder_;
  std::vector<std::byte> content_;
};

}  // namespace korvex
