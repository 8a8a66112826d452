#include "platform/posix/scratch_folder.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/posix/posix_io.h"

namespace korvex {

PosixScratchFolder::PosixScratchFolder() {
  const char* const chosen = getenv("TMPDIR");
  const std::string parent = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
  path_ = parent + "/korvex-XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) throw SystemError(errno, "write to", parent);
}

PosixScratchFolder::~PosixScratchFolder() {
  // Looking into the folder takes descriptors, of which there may be none left.
  if (rmdir(path_.c_str()) == 0) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace korvex
