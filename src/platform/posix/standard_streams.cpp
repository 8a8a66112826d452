#include "platform/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix/posix_io.h"

namespace korvex {
namespace {

constexpr char kOutput[] = "standard output";

}  // namespace

// A file that is opened takes the lowest number that is free.
void OccupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // In the wrong direction on purpose: using the stream still fails.
    if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream) return;
  }
}

void WriteOutput(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
    throw SystemError(errno, "write to", kOutput);
  }
}

void FlushOutput() {
  if (std::fflush(stdout) != 0) throw SystemError(errno, "write to", kOutput);
  // An earlier write may have failed without anybody having looked.
  if (std::ferror(stdout)) throw SystemError(EIO, "write to", kOutput);
}

}  // namespace korvex
