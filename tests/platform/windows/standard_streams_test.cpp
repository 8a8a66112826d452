#include "platform/standard_streams.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <io.h>

#include <cstdio>
#include <string>

#include "platform/windows/windows_handle.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

// What is written to standard output arrives here for its own lifetime.
class OutputPipe {
 public:
  OutputPipe() : former_(_dup(1)) {
    HANDLE ends[2];
    if (!CreatePipe(&ends[0], &ends[1], nullptr, 0)) return;
    reader = Handle(ends[0]);
    const int writer = _open_osfhandle(reinterpret_cast<std::intptr_t>(ends[1]), _O_TEXT);
    std::fflush(stdout);
    _dup2(writer, 1);
    _close(writer);
  }
  ~OutputPipe() {
    std::clearerr(stdout);
    _dup2(former_, 1);
    _close(former_);
  }

  Handle reader;

 private:
  int former_;
};

TEST(StandardStreams, WriteBytesAsTheyAre) {
  const OutputPipe pipe;
  OccupyStandardStreams();
  WriteOutput("\xC2\xB5\tx\n");
  FlushOutput();
  char bytes[20];
  DWORD count = 0;
  ReadFile(pipe.reader.Get(), bytes, sizeof bytes, &count, nullptr);
  EXPECT_EQ(std::string(bytes, count), "\xC2\xB5\tx\n");
}

TEST(StandardStreams, TellWhenTheOutputIsLost) {
  Error error(0, "", "");
  {
    OutputPipe pipe;
    pipe.reader.Close();
    error = ErrorOf([] {
      WriteOutput("result");
      FlushOutput();
    });
  }
  EXPECT_EQ(error.Number(), 75);
  EXPECT_EQ(error.Description(), "Cannot write to standard output: Broken pipe.");
}

TEST(StandardStreams, LendTheirHandlesToNoFile) {
  const HANDLE former = GetStdHandle(STD_ERROR_HANDLE);
  Handle closed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
  SetStdHandle(STD_ERROR_HANDLE, closed.Get());
  closed.Close();
  OccupyStandardStreams();
  EXPECT_EQ(GetStdHandle(STD_ERROR_HANDLE), INVALID_HANDLE_VALUE);
  SetStdHandle(STD_ERROR_HANDLE, former);
}

}  // namespace
}  // namespace korvex
