// The files of a Linux machine.
//
// A file counts as in use, error 70, when another program holds a lock on it (fcntl or flock) or
// when an office program's owner file ".~lock.NAME#" lies beside it. Only ordinary files are read
// or written: a named pipe or a device is refused with error 75, without waiting for it.
#pragma once

#include "platform/file_system.h"
#include "text/code_page_1252.h"

namespace korvex {

class PosixFileSystem : public FileSystem {
 public:
  char Separator() const override { return '/'; }
  std::string DriveName(std::string_view) const override { return {}; }
  std::vector<std::string> Drives() const override;
  std::string DefaultFolder() const override;
  std::string DefaultTempFolder() const override { return "/tmp"; }
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
  void CheckWritable(const std::string& path) override;
  // A link is followed: the file that it leads to is replaced. An existing file keeps its rights
  // and attributes (FileRights), a read-only one is refused.
  std::unique_ptr<ReplacementFile> Replace(const std::string& path) override;
  std::unique_ptr<ReplacementFile> ReplacePrivately(const std::string& path) override;
  // Locks the file itself, which is created, private to the user, when it is missing.
  std::unique_ptr<FileLock> Lock(const std::string& path) override;
  void CreateFolder(const std::string& path) override;
  void CreatePrivateFolder(const std::string& path) override;
  void DeleteFile(const std::string& path) override;
};

}  // namespace korvex
