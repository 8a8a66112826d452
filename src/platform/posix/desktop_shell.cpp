#include "platform/posix/desktop_shell.h"

#include <cstdlib>

#include "platform/posix/posix_file_system.h"
#include "platform/posix/process.h"

namespace korvex {

void DesktopShell::Open(const std::string& file) {
  const PosixFileSystem files;
  if (!files.FileExists(file)) return;
  const std::string program = FindProgram("xdg-open");
  // An absolute path cannot be taken for an option or an address.
  if (!program.empty()) StartDetached({program, files.AbsolutePath(file)});
}

std::string DesktopShell::EnvironmentVariable(const std::string& name) const {
  const char* value = std::getenv(name.c_str());
  return value ? value : "";
}

}  // namespace korvex
