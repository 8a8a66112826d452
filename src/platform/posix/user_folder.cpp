#include "platform/posix/user_folder.h"

#include <cstdlib>

namespace korvex {

std::string UserFolder(const PosixFileSystem& files) {
  const char* state = std::getenv("XDG_STATE_HOME");
  const std::string folder =
      state && *state == '/' ? std::string(state) : files.DefaultFolder() + "/.local/state";
  return files.AbsolutePath(folder + "/korvex");
}

}  // namespace korvex
