#include "platform/standard_streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "platform/native_platform.h"
#include "tests/platform/temp_folder.h"

namespace korvex {
namespace {

// Puts a file in the place of a standard stream for its own lifetime.
class Redirected {
 public:
  Redirected(int stream, const std::string& path) : stream_(stream), former_(dup(stream)) {
    std::fflush(stdout);
    const int file = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    dup2(file, stream);
    close(file);
  }
  ~Redirected() {
    std::fflush(stdout);
    dup2(former_, stream_);
    close(former_);
  }

 private:
  int stream_;
  int former_;
};

TEST(StandardStreams, TakeBytesAsTheyAre) {
  const TempFolder folder;
  {
    const Redirected output(1, folder / "output");
    OccupyStandardStreams();
    WriteOutput("\xC2\xB5\tx\n");
    FlushOutput();
  }
  EXPECT_EQ(Content(folder / "output"), "\xC2\xB5\tx\n");
}

TEST(Terminal, ReadsLinesToTheEndOfInput) {
  const TempFolder folder;
  const Redirected input(0, folder.Put("input", "first\nsecond \xC2\xB5\r\n\nlast"));
  const auto terminal = OpenTerminal();
  EXPECT_FALSE(terminal->CanAsk());
  for (const char* line : {"first", "second \xC2\xB5", "", "last"}) {
    EXPECT_EQ(terminal->ReadLine(), line);
  }
  EXPECT_EQ(terminal->ReadLine(), std::nullopt);
}

TEST(Terminal, WritesErrorsToAFileAsTheyAre) {
  const TempFolder folder;
  {
    const Redirected errors(2, folder / "errors");
    const auto terminal = OpenTerminal();
    EXPECT_FALSE(terminal->CanRedraw());
    EXPECT_EQ(terminal->Columns(), 80) << "unknown";
    terminal->WriteError("\xC2\xB5g\n");
  }
  EXPECT_EQ(Content(folder / "errors"), "\xC2\xB5g\n");
}

}  // namespace
}  // namespace korvex
