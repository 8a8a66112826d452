#include "platform/standard_streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "platform/error.h"

namespace korvex {
namespace {

// The exit status of a program that does this.
template <class Action>
int StatusOf(Action action) {
  const pid_t child = fork();
  if (child == 0) _exit(action());
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

TEST(StandardStreams, LendTheirNumbersToNoFile) {
  EXPECT_EQ(StatusOf([] {
              for (const int stream : {0, 1, 2}) close(stream);
              OccupyStandardStreams();
              const bool fails = write(2, "x", 1) < 0 && write(1, "x", 1) < 0;
              return fails && open("/dev/null", O_WRONLY) > 2 ? 0 : 1;
            }),
            0);
}

TEST(StandardStreams, TellWhenTheOutputIsLost) {
  EXPECT_EQ(StatusOf([] {
              std::freopen("/dev/full", "w", stdout);
              try {
                WriteOutput("result");
                FlushOutput();
              } catch (const Error& error) {
                return error.Number() == error_number::kDiskFull ? 0 : 2;
              }
              return 1;
            }),
            0);
}

}  // namespace
}  // namespace korvex
