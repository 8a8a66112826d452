// A file written beside its target that takes the target's place as a whole.
//
// While it is written it has no name at all where the file system allows that (O_TMPFILE), so that
// not even a killed program leaves it behind; elsewhere its name is ".korvex-" and random digits.
// While it exists the signals that end a program wait, so that they leave no such name behind.
// It lies in the target's own folder, since a file is only ever renamed within one file system.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/file_system.h"
#include "platform/posix/held_signals.h"
#include "platform/posix/posix_io.h"

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

 private:
  // What the new file takes over from the one it replaces.
  struct Former {
    mode_t mode;
    uid_t owner;
    gid_t group;
  };

  void ExamineTarget();
  void Create(mode_t mode);
  void TakeOverPermissions();
  void GiveName();
  void SyncFolder();
  Error Failure(int error) const;

  HeldSignals held_;  // first, to be let go last
  std::string target_;
  std::string folder_;
  std::optional<Former> former_;
  Descriptor file_;
  std::string name_;  // full path of the temporary file; empty while it has none
};

}  // namespace korvex
