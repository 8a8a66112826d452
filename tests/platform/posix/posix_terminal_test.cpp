#include "platform/posix/posix_terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "platform/posix/desktop_sound.h"

namespace korvex {
namespace {

// A terminal of the test's own.
class PseudoTerminal {
 public:
  PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    grantpt(master_.Get());
    unlockpt(master_.Get());
    slave_ = Descriptor(open(ptsname(master_.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
  }

  void SetColumns(unsigned short columns) {
    const winsize size{24, columns, 0, 0};
    ioctl(slave_.Get(), TIOCSWINSZ, &size);
  }
  // The next `size` bytes that appear.
  std::string Screen(std::size_t size) {
    std::string text;
    char byte;
    pollfd input{master_.Get(), POLLIN, 0};
    while (text.size() < size && poll(&input, 1, 1000) > 0 && read(master_.Get(), &byte, 1) == 1) {
      text += byte;
    }
    return text;
  }
  int Slave() const { return slave_.Get(); }

 private:
  Descriptor master_;
  Descriptor slave_;
};

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

TEST(PosixTerminal, AsksOnlyWhenInputAndErrorsAreATerminal) {
  const PseudoTerminal screen;
  const Pipe pipe;
  PosixTerminal terminal;
  const struct {
    int input, error;
    bool can_ask, can_redraw;
  } cases[] = {{screen.Slave(), screen.Slave(), true, true},
               {pipe.reader.Get(), screen.Slave(), false, true},
               {screen.Slave(), pipe.writer.Get(), false, false}};
  for (const auto& c : cases) {
    const StandardStreams streams(c.input, c.error);
    EXPECT_EQ(terminal.CanAsk(), c.can_ask);
    EXPECT_EQ(terminal.CanRedraw(), c.can_redraw);
  }
}

TEST(PosixTerminal, TellsTheWidthOfItsWindow) {
  PseudoTerminal screen;
  const StandardStreams streams(screen.Slave(), screen.Slave());
  const PosixTerminal terminal;
  EXPECT_EQ(terminal.Columns(), 80) << "unknown";
  screen.SetColumns(132);
  EXPECT_EQ(terminal.Columns(), 132);
}

TEST(PosixTerminal, ReadsLinesToTheEndOfInput) {
  Pipe pipe;
  const StandardStreams streams(pipe.reader.Get(), STDERR_FILENO);
  PosixTerminal terminal;
  const std::string_view input = "first\nsecond\r\n\nlast";
  ASSERT_EQ(write(pipe.writer.Get(), input.data(), input.size()), std::ssize(input));
  pipe.writer.Close();
  for (const char* line : {"first", "second", "", "last"}) EXPECT_EQ(terminal.ReadLine(), line);
  EXPECT_EQ(terminal.ReadLine(), std::nullopt);
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

  raise(SIGINT);
  EXPECT_TRUE(terminal.TakeInterrupt());
  EXPECT_FALSE(terminal.TakeInterrupt());
  ASSERT_EQ(write(pipe.writer.Get(), "x\n", 2), 2);
  EXPECT_EQ(terminal.ReadLine(), "x") << "an interrupt that was taken is over";
}

TEST(PosixTerminal, TakesTwoQuickInterruptsAsQuestionAndAnswer) {
  const Pipe pipe;
  const StandardStreams streams(pipe.reader.Get(), STDERR_FILENO);
  PosixTerminal terminal;
  raise(SIGINT);
  raise(SIGINT);
  EXPECT_TRUE(terminal.TakeInterrupt());
  EXPECT_EQ(terminal.ReadLine(), std::nullopt);
  EXPECT_FALSE(terminal.TakeInterrupt());
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

TEST(PosixTerminal, WritesWhetherOrNotSomebodyListens) {
  Pipe pipe;
  {
    const StandardStreams streams(STDIN_FILENO, pipe.writer.Get());
    PosixTerminal terminal;
    terminal.WriteError("message\n");
    char text[20];
    EXPECT_EQ(read(pipe.reader.Get(), text, sizeof text), 8);
    pipe.reader.Close();
    EXPECT_NO_THROW(terminal.WriteError("lost"));
  }
}

TEST(DesktopSound, BeepsOnATerminalOnly) {
  const Pipe pipe;
  PseudoTerminal screen;
  DesktopSound sound("libmissing.so.0");
  {
    const StandardStreams streams(STDIN_FILENO, screen.Slave());
    sound.Beep();
    sound.PlayAlias("SystemAsterisk");
  }
  EXPECT_EQ(screen.Screen(2), "\a\a");
  {
    const StandardStreams streams(STDIN_FILENO, pipe.writer.Get());
    sound.Beep();
  }
  pollfd input{pipe.reader.Get(), POLLIN, 0};
  EXPECT_EQ(poll(&input, 1, 0), 0);
}

}  // namespace
}  // namespace korvex
