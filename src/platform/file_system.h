// Files and folders of the machine. Paths are native and UTF-8; what a path means (separator,
// drives) is asked here, so that the path rules hold in both styles on every machine.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

struct FolderEntry {
  std::string name;
  bool is_folder = false;
  bool is_link = false;    // and may lead back to where it stands
  bool is_hidden = false;  // from people who choose among files, not from a run
  // Why a link could not be followed, so that it is not known whether it leads to a folder; empty
  // when it was followed, or its target does not exist.
  std::string obstacle = {};
};

// A file open for appending. Every write goes straight to the file.
class AppendFile {
 public:
  virtual ~AppendFile() = default;
  virtual void Write(std::string_view bytes) = 0;
};

// A file being written beside its target, which it replaces as a whole on Commit. Without Commit it
// is deleted, and the target stays as it was.
class ReplacementFile {
 public:
  virtual ~ReplacementFile() = default;
  virtual void Write(std::span<const std::byte> bytes) = 0;
  // Flushes to the disk and takes the target's place. The target's permissions stay, or become
  // fewer.
  virtual void Commit() = 0;
  // The same, but never replaces: error 58 when there is a file of the target's name now.
  virtual void CommitAsNew() = 0;
};

// Keeps other programs that ask for a lock on the same file out for its own lifetime. The system
// releases it when the program ends, even when it is killed.
class FileLock {
 public:
  virtual ~FileLock() = default;
};

// Tells one content of a file from another without reading it: which file it is, its size, and when
// it was changed, in nanoseconds since 1970.
struct FileVersion {
  std::uint64_t volume = 0;
  std::uint64_t file = 0;
  std::int64_t size = 0;
  std::int64_t content_changed = 0;
  std::int64_t status_changed = 0;  // name, rights or content

  friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

// Errors: 53 no such file, 76 no such folder, 70 permission denied or in use, 75 other access
// errors, 61 disk full, 57 device error, 58 file exists, 68 device not available. Descriptions name
// the path.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual char Separator() const = 0;
  // "C:" or "\\server\share" on Windows, "" on Linux.
  virtual std::string DriveName(std::string_view path) const = 0;
  // The root folders to choose from: "A:\", "C:\" on Windows; on Linux "/" and what is mounted
  // below it, in ascending order. A drive may turn out to be empty when it is listed (68).
  virtual std::vector<std::string> Drives() const = 0;
  // Folder where a program starts that has no stored folder: "C:\", or the home folder on Linux.
  virtual std::string DefaultFolder() const = 0;
  // The folder for temporary files when the environment names none: "C:\TEMP", or "/tmp" on Linux.
  virtual std::string DefaultTempFolder() const = 0;
  // Makes a path absolute and takes "." and ".." out of it; nothing needs to exist.
  virtual std::string AbsolutePath(std::string_view path) const = 0;

  virtual bool FileExists(const std::string& path) const = 0;
  virtual bool FolderExists(const std::string& path) const = 0;
  // Whether a file that exists is one of the others, to which links or other spellings may lead.
  virtual bool IsOneOf(const std::string& file, std::span<const std::string> others) const = 0;
  // None for a file that does not exist. Two contents can have one version within the step in which
  // the file system counts time (up to two seconds).
  virtual std::optional<FileVersion> VersionOf(const std::string& path) const = 0;
  // Files and sub-folders in no order; "." and ".." left out. Links count as what they lead to;
  // what is neither file nor folder (sockets, dead links) counts as a file.
  virtual std::vector<FolderEntry> List(const std::string& folder) const = 0;

  // Replaces the content of `content` by the whole file, reusing its memory.
  virtual void ReadFile(const std::string& path, std::vector<std::byte>& content) const = 0;
  // The same for the first `most` bytes of the file, or all when it has no more.
  virtual void ReadStart(const std::string& path, std::size_t most,
                         std::vector<std::byte>& content) const = 0;
  // A text as plain text files of the system hold it: in the code page of Windows, or in code page
  // 1252 on systems that have none. Characters that it lacks become one that looks like it, or "?".
  virtual std::string PlainText(std::string_view utf8) const = 0;
  // Creates the file when it is missing.
  virtual std::unique_ptr<AppendFile> OpenForAppending(const std::string& path) = 0;
  // Raises what would keep a file from being made there or appended to. Neither makes nor changes
  // anything under that name.
  virtual void CheckWritable(const std::string& path) = 0;
  // Fails now if Commit could not replace the file. A link is followed; error 76 for one whose
  // target does not exist.
  virtual std::unique_ptr<ReplacementFile> Replace(const std::string& path) = 0;
  // The same for a file of the program's own. One that is new is for this user alone where the
  // system tells users apart, and at every moment of a Commit there is a file of that name: the
  // former or the new one.
  virtual std::unique_ptr<ReplacementFile> ReplacePrivately(const std::string& path) = 0;
  // Error 70 when another program keeps the lock for five seconds. May create the file; its folder
  // must exist.
  virtual std::unique_ptr<FileLock> Lock(const std::string& path) = 0;
  // Creates one level. No error when the folder exists already.
  virtual void CreateFolder(const std::string& path) = 0;
  virtual void CreatePrivateFolder(const std::string& path) = 0;
  virtual void DeleteFile(const std::string& path) = 0;
};

// How long `FileSystem::Lock` waits for another program.
inline constexpr std::chrono::seconds kLockPatience{5};
inline constexpr std::chrono::milliseconds kLockInterval{5};
// What its error says then.
std::string LockedText(const std::string& path);

// The folder that an absolute path lies in, without a separator at its end unless it is a root;
// empty above a root.
std::string ParentFolder(const FileSystem& files, const std::string& path);

// Creates the folder with all that are missing above it.
enum class FolderUse { kShared, kPrivate };
void CreateFolders(FileSystem& files, const std::string& folder, FolderUse use);

}  // namespace korvex
