// The files of a Windows machine, on drives ("C:\") and shares ("\\server\share").
//
// "/" is taken for "\", and paths may be as long as the disk holds them. A file counts as in use,
// error 70, when another program has it open without sharing it, or when an office program's owner
// file ("~$NAME", ".~lock.NAME#") lies beside it. Only ordinary files are read or written: a pipe
// or a device ("NUL") is refused with error 75.
#pragma once

#include "platform/file_system.h"
#include "platform/windows/wide_text.h"

namespace korvex {

class WindowsFileSystem : public FileSystem {
 public:
  // From now on an empty drive is an error of the process, and the user is not asked for a disk.
  WindowsFileSystem();

  char Separator() const override { return '\\'; }
  std::string DriveName(std::string_view path) const override;
  std::vector<std::string> Drives() const override;
  std::string DefaultFolder() const override { return "C:\\"; }
  std::string DefaultTempFolder() const override { return "C:\\TEMP"; }
  std::string AbsolutePath(std::string_view path) const override;

  bool FileExists(const std::string& path) const override;
  bool FolderExists(const std::string& path) const override;
  bool IsOneOf(const std::string& file, std::span<const std::string> others) const override;
  std::optional<FileVersion> VersionOf(const std::string& path) const override;
  std::vector<FolderEntry> List(const std::string& folder) const override;

  void ReadFile(const std::string& path, std::vector<std::byte>& content) const override;
  void ReadStart(const std::string& path, std::size_t most,
                 std::vector<std::byte>& content) const override;
  std::string PlainText(std::string_view utf8) const override { return ToSystemCodePage(utf8); }
  std::unique_ptr<AppendFile> OpenForAppending(const std::string& path) override;
  void CheckWritable(const std::string& path) override;
  // A link is followed: the file that it leads to is replaced. An existing file keeps its
  // permissions, a read-only one is refused.
  std::unique_ptr<ReplacementFile> Replace(const std::string& path) override;
  // The folder of a user's own files says who may read them.
  std::unique_ptr<ReplacementFile> ReplacePrivately(const std::string& path) override;
  // By a hidden file "NAME.lock" beside it, which the system deletes with the program that made it:
  // a lock on the file itself would be in the way of replacing it.
  std::unique_ptr<FileLock> Lock(const std::string& path) override;
  void CreateFolder(const std::string& path) override;
  void CreatePrivateFolder(const std::string& path) override { CreateFolder(path); }
  void DeleteFile(const std::string& path) override;
};

}  // namespace korvex
