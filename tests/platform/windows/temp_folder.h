// A folder of its own for one test, and the few raw file operations that tests check results with.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "platform/windows/wide_text.h"

namespace korvex {

class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    path_ = FromWide((std::filesystem::temp_directory_path() / "korvex-test-").wstring()) +
            std::to_string(random());
    std::filesystem::create_directory(ToWide(path_));
  }
  ~TempFolder() {
    std::error_code ignored;
    // As the system takes names that end in a dot, or long paths.
    std::filesystem::remove_all(LR"(\\?\)" + ToWide(path_), ignored);
  }
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
