#include "platform/posix/program_folder.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/posix/posix_io.h"

namespace korvex {

std::string ProgramFolder() {
  const std::string link = "/proc/self/exe";
  std::array<char, PATH_MAX> path;
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  if (length < 0) throw SystemError(errno, "read", link);
  return FolderOf(std::string(path.data(), static_cast<std::size_t>(length)));
}

}  // namespace korvex
