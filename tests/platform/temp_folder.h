// A folder of its own for one test, and the few raw file operations that tests check results with.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace korvex {

inline std::filesystem::path PathOf(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

inline std::string Utf8Of(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return {utf8.begin(), utf8.end()};
}

class TempFolder {
 public:
  TempFolder() {
    const std::string name = "korvex-test-" + std::to_string(std::random_device()());
    // Links resolved, as the working directory is told once a test works there.
    path_ = std::filesystem::canonical(std::filesystem::temp_directory_path()) / name;
    std::filesystem::create_directory(path_);
  }
  ~TempFolder() {
    namespace fs = std::filesystem;
    std::error_code ignored;
    for (const auto& entry : fs::recursive_directory_iterator(path_)) Protect(entry, false);
    fs::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string Path() const { return Utf8Of(path_); }
  // With the separators of the system.
  std::string operator/(const std::string& name) const {
    return Utf8Of((path_ / PathOf(name)).make_preferred());
  }

  std::string Put(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / PathOf(name), std::ios::binary) << content;
    return *this / name;
  }
  std::string PutProtected(const std::string& name, const std::string& content) const {
    Protect(PathOf(Put(name, content)), true);
    return *this / name;
  }
  std::string PutFolder(const std::string& name) const {
    std::filesystem::create_directory(path_ / PathOf(name));
    return *this / name;
  }
  std::size_t EntryCount() const {
    const std::filesystem::directory_iterator entries(path_);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }

 private:
  static void Protect(const std::filesystem::path& path, bool protect) {
    using enum std::filesystem::perms;
    using enum std::filesystem::perm_options;
    std::error_code ignored;  // a link that leads nowhere
    const auto write = owner_write | group_write | others_write;
    std::filesystem::permissions(path, protect ? write : owner_write, protect ? remove : add,
                                 ignored);
  }

  std::filesystem::path path_;
};

inline std::string Content(const std::string& path) {
  std::ifstream file(PathOf(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace korvex
