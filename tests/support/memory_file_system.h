// A file system in memory with the path rules of Windows or of Linux, for tests of either on any
// machine.
#pragma once

#include <functional>
#include <limits>
#include <map>
#include <utility>

#include "platform/file_system.h"
#include "text/code_page_1252.h"

namespace korvex {

enum class PathStyle { kLinux, kWindows };

enum class FileOperation { kList, kRead, kAppend, kReplace, kCreateFolder, kDelete };

// Names keep their spelling; Windows style finds them in any letter case and takes "/" for "\".
// Relative paths start at DefaultFolder(), which exists, as does DefaultTempFolder() on Linux.
// List() answers in descending order, so that a caller who forgets to sort is found out.
class MemoryFileSystem : public FileSystem {
 public:
  explicit MemoryFileSystem(PathStyle style);

  char Separator() const override;
  std::string DriveName(std::string_view path) const override;
  std::vector<std::string> Drives() const override;
  std::string DefaultFolder() const override;
  std::string DefaultTempFolder() const override;
  std::string AbsolutePath(std::string_view path) const override;
  bool FileExists(const std::string& path) const override;
  bool FolderExists(const std::string& path) const override;
  bool IsOneOf(const std::string& file, std::span<const std::string> others) const override;
  std::optional<FileVersion> VersionOf(const std::string& path) const override;
  std::vector<FolderEntry> List(const std::string& folder) const override;
  void ReadFile(const std::string& path, std::vector<std::byte>& content) const override;
  void ReadStart(const std::string& path, std::size_t most,
                 std::vector<std::byte>& content) const override;
  std::string PlainText(std::string_view utf8) const override { return ToCodePage1252(utf8); }
  std::unique_ptr<AppendFile> OpenForAppending(const std::string& path) override;
  void CheckWritable(const std::string& path) override {
    CheckWritable(FileOperation::kAppend, path);
  }
  std::unique_ptr<ReplacementFile> Replace(const std::string& path) override;
  std::unique_ptr<ReplacementFile> ReplacePrivately(const std::string& path) override {
    return Replace(path);
  }
  // There is no other program.
  std::unique_ptr<FileLock> Lock(const std::string&) override {
    return std::make_unique<FileLock>();
  }
  void CreateFolder(const std::string& path) override;
  void CreatePrivateFolder(const std::string& path) override { CreateFolder(path); }
  void DeleteFile(const std::string& path) override;

  // Both make the folders above, a new drive or share included.
  void AddFolder(const std::string& path);
  void AddFile(const std::string& path, std::string_view content = {});
  // Takes a file, or a folder with everything in it, away behind the program's back.
  void Remove(const std::string& path);
  // Error 53 when there is no such file.
  const std::string& Content(const std::string& path) const;

  // Called before a folder is listed: for what a slow disk does to a window.
  std::function<void(const std::string& folder)> on_list;

  // How often the file has been read so far.
  int Reads(const std::string& path) const { return reads_[Key(path)]; }

  // From now on the operation on this one path raises the error.
  void Fail(FileOperation operation, const std::string& path, int error_number);
  // Every operation on the path is refused with error 70; that it exists can still be seen.
  void Deny(const std::string& path);
  // The disk takes this many more bytes; the write that exceeds them stores what fits and raises
  // error 61.
  void LimitSpace(std::size_t bytes) { space_ = bytes; }

 private:
  class Appending;
  class Replacing;
  struct Node {
    std::string path;  // absolute, as spelled by whoever made it
    bool is_folder = false;
    std::string content = {};
    std::int64_t version = 0;  // another one whenever the content is replaced
  };

  std::string Key(std::string_view path) const;
  std::string Root(std::string_view absolute) const { return DriveName(absolute) + Separator(); }
  std::string Parent(const std::string& absolute) const;
  const Node* Find(std::string_view path) const;
  void Check(FileOperation operation, const std::string& path) const;
  void CheckWritable(FileOperation operation, const std::string& path) const;
  void Put(const std::string& path, std::string content);
  void Append(std::string_view bytes, std::string& content, const std::string& path);

  PathStyle style_;
  std::map<std::string, Node> nodes_;
  std::map<std::pair<FileOperation, std::string>, int> failures_;
  std::int64_t last_version_ = 0;
  mutable std::map<std::string, int> reads_;
  std::size_t space_ = std::numeric_limits<std::size_t>::max();
};

}  // namespace korvex
