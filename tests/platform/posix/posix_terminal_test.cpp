// Terminals, pipes and Ctrl-C of a POSIX system.
#include "platform/posix/posix_terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/posix/posix_desktop.h"
#include "platform/standard_streams.h"

namespace korvex {
namespace {

// Puts descriptors in the place of standard input and standard error for its own lifetime.
class StandardStreams {
 public:
  StandardStreams(int input, int error) : input_(dup(STDIN_FILENO)), error_(dup(STDERR_FILENO)) {
    dup2(input, STDIN_FILENO);
    dup2(error, STDERR_FILENO);
  }
  ~StandardStreams() {
    dup2(input_.Get(), STDIN_FILENO);
    dup2(error_.Get(), STDERR_FILENO);
  }

 private:
  Descriptor input_;
  Descriptor error_;
};

struct Pipe {
  Pipe() {
    int ends[2];
    if (pipe(ends) != 0) return;
    reader = Descriptor(ends[0]);
    writer = Descriptor(ends[1]);
  }
  Descriptor reader;
  Descriptor writer;
};

TEST(PosixTerminal, AsksAndBeepsOnlyWhereATerminalIs) {
  const Descriptor screen(posix_openpt(O_RDWR | O_NOCTTY));
  grantpt(screen.Get());
  unlockpt(screen.Get());
  const Descriptor user(open(ptsname(screen.Get()), O_RDWR | O_NOCTTY));
  const winsize size{24, 132, 0, 0};
  ioctl(user.Get(), TIOCSWINSZ, &size);
  const Pipe pipe;
  PosixTerminal terminal;
  DesktopSound sound("libmissing.so.0");
  const struct {
    int input, error;
    bool can_ask, can_redraw;
  } cases[] = {{user.Get(), user.Get(), true, true},
               {pipe.reader.Get(), user.Get(), false, true},
               {user.Get(), pipe.writer.Get(), false, false}};
  for (const auto& c : cases) {
    const StandardStreams streams(c.input, c.error);
    EXPECT_EQ(terminal.CanAsk(), c.can_ask);
    EXPECT_EQ(terminal.CanRedraw(), c.can_redraw);
    EXPECT_EQ(terminal.Columns(), c.can_redraw ? 132 : 80);
    sound.Beep();
    sound.PlayAlias("SystemAsterisk");
  }
  std::string beeps;
  char beep;
  pollfd output{screen.Get(), POLLIN, 0};
  while (beeps.size() < 4 && poll(&output, 1, 1000) > 0 && read(screen.Get(), &beep, 1) == 1) {
    beeps += beep;
  }
  EXPECT_EQ(beeps, "\a\a\a\a");
  pollfd input{pipe.reader.Get(), POLLIN, 0};
  EXPECT_EQ(poll(&input, 1, 0), 0);
}

TEST(PosixTerminal, EndsTheWaitForALineOnCtrlC) {
  Pipe pipe;
  const StandardStreams streams(pipe.reader.Get(), STDERR_FILENO);
  PosixTerminal terminal;
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) {
    kill(parent, SIGINT);  // before or during the wait: either ends it
    _exit(0);
  }
  EXPECT_EQ(terminal.ReadLine(), std::nullopt);
  EXPECT_FALSE(terminal.TakeInterrupt()) << "it has answered the question already";
  waitpid(child, nullptr, 0);
  ASSERT_EQ(write(pipe.writer.Get(), "x\n", 2), 2);
  EXPECT_EQ(terminal.ReadLine(), "x");

  raise(SIGINT);
  raise(SIGINT);
  EXPECT_TRUE(terminal.TakeInterrupt()) << "the question";
  EXPECT_EQ(terminal.ReadLine(), std::nullopt) << "and the answer";
  EXPECT_FALSE(terminal.TakeInterrupt());
  ASSERT_EQ(write(pipe.writer.Get(), "x\n", 2), 2);
  EXPECT_EQ(terminal.ReadLine(), "x") << "an interrupt that was taken is over";
}

TEST(PosixTerminal, EndsTheProgramAtTheThirdCtrlC) {
  const auto press = [] {
    PosixTerminal terminal;
    for (int i = 0; i < 2; ++i) raise(SIGINT);
    if (!terminal.TakeInterrupt() || terminal.ReadLine() || terminal.IsInterrupted()) _exit(1);
    raise(SIGINT);
    _exit(2);
  };
  EXPECT_EXIT(press(), testing::KilledBySignal(SIGINT), "");
}

TEST(PosixTerminal, NoticesInterruptsThatAScriptHadIgnored) {
  const auto former = signal(SIGINT, SIG_IGN);
  {
    PosixTerminal terminal;
    raise(SIGINT);
    EXPECT_TRUE(terminal.TakeInterrupt());
  }
  EXPECT_EQ(signal(SIGINT, former), SIG_IGN);
}

TEST(PosixTerminal, SurvivesAClosedErrorStream) {
  Pipe pipe;
  pipe.reader.Close();
  const StandardStreams streams(STDIN_FILENO, pipe.writer.Get());
  EXPECT_NO_THROW(PosixTerminal().WriteError("lost"));
}

// Does something in a program of its own, which ends with status 0 when that went well.
template <class Action>
void ExpectInChild(Action action) {
  const pid_t child = fork();
  if (child == 0) _exit(action() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST(PosixStandardStreams, KeepTheirNumbersFromOtherFiles) {
  ExpectInChild([] {
    for (const int stream : {0, 1, 2}) close(stream);
    OccupyStandardStreams();
    const bool fails = write(2, "x", 1) < 0 && write(1, "x", 1) < 0;
    return fails && open("/dev/null", O_WRONLY) > 2;
  });
}

TEST(PosixStandardStreams, TellWhenTheOutputIsLost) {
  ExpectInChild([] {
    if (!std::freopen("/dev/full", "w", stdout)) return false;
    try {
      WriteOutput("result");
      FlushOutput();
    } catch (const Error& error) {
      return error.Number() == error_number::kDiskFull;
    }
    return false;
  });
}

}  // namespace
}  // namespace korvex
