// A file written beside its target that takes the target's place as a whole.
//
// It lies in the target's own folder, since a file can only be renamed within one file system.
// Where the file system allows it (O_TMPFILE) it has no name while it is written, so that not even
// a killed program leaves it behind; elsewhere its name begins with ".korvex-", and the next
// replacement in that folder removes what a killed program has left. Signals that end the program
// wait until it is done.
//
// The constructor checks that the target can be replaced, so that a folder, file system or
// protection that forbids it is reported before the first byte.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/file_system.h"
#include "platform/posix/file_rights.h"
#include "platform/posix/posix_io.h"
#include "platform/posix/temporary_files.h"

namespace korvex {

class PosixReplacementFile : public ReplacementFile {
 public:
  // `target` is a path whose links have been followed; a new file gets `new_mode` less the umask.
  PosixReplacementFile(std::string target, mode_t new_mode);
  ~PosixReplacementFile() override;
  PosixReplacementFile(const PosixReplacementFile&) = delete;
  PosixReplacementFile& operator=(const PosixReplacementFile&) = delete;

  void Write(std::span<const std::byte> bytes) override;
  void Commit() override;
  void CommitAsNew() override;

 private:
  // The steps of the constructor. Each throws what would keep Commit from replacing the target.
  void ExamineTarget();
  void CheckPlace() const;
  void Create(mode_t mode);
  void CreateUnderName(mode_t mode);
  // The steps of both kinds of Commit. Those that return an int return 0 or an errno.
  void Finish();
  void GiveName();
  int TakeFreePlace();
  int Rename();
  void SyncFolder();
  // The error of the target, and of its folder when that is what forbids the replacement.
  Error Failure(int error) const;
  Error FolderFailure(int error) const;

  HeldSignals held_;  // first member, so released last
  std::string target_;
  std::string folder_;
  std::optional<FileRights> former_;  // of the file that is replaced
  Descriptor file_;
  std::string name_;  // full path of the temporary file; empty while it has none
  off64_t written_ = 0;
  off64_t on_the_way_ = 0;  // bytes that the disk has been told to take
};

}  // namespace korvex
