#include "platform/posix/scratch_folder.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/posix/leftovers.h"

namespace korvex {
namespace {
constexpr int kNameAttempts = 100;
constexpr char kPrefix[] = "korvex-";
}  // namespace

PosixScratchFolder::PosixScratchFolder() {
  const char* const chosen = getenv("TMPDIR");
  const std::string parent = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
  RemoveLeftovers(parent, kPrefix);
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    path_ = parent + "/" + TemporaryName(kPrefix);
    if (mkdir(path_.c_str(), 0700) != 0) {
      if (errno == EEXIST) continue;
      break;
    }
    folder_ = OpenFile(path_, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (folder_.IsOpen() && HoldTemporary(folder_.Get(), path_)) return;
  }
  throw SystemError(errno, "write to", parent);
}

PosixScratchFolder::~PosixScratchFolder() {
  // Looking into the folder takes descriptors, of which there may be none left.
  if (rmdir(path_.c_str()) == 0) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace korvex
