// A folder for files of the moment, below TMPDIR or /tmp; only its owner may look into it.
//
// While it exists the signals that end a program wait, so that they do not leave it behind. What a
// killed program has left, the next one removes.
#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/posix/leftovers.h"
#include "platform/posix/posix_io.h"

namespace korvex {

class PosixScratchFolder : public ScratchFolder {
 public:
  PosixScratchFolder();
  ~PosixScratchFolder() override;
  PosixScratchFolder(const PosixScratchFolder&) = delete;
  PosixScratchFolder& operator=(const PosixScratchFolder&) = delete;

  const std::string& Path() const override { return path_; }

 private:
  HeldSignals held_;  // first, to be let go last
  std::string path_;
  Descriptor folder_;  // keeps it from being taken for a leftover
};

}  // namespace korvex
