// Consoles, pipes and Ctrl-C of Windows.
#include "platform/windows/windows_terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include <cstdio>
#include <string>
#include <thread>

#include "platform/standard_streams.h"
#include "platform/windows/windows_handle.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

// Puts handles in the place of standard input and standard error for its own lifetime.
class StandardStreams {
 public:
  StandardStreams(HANDLE input, HANDLE error)
      : input_(GetStdHandle(STD_INPUT_HANDLE)), error_(GetStdHandle(STD_ERROR_HANDLE)) {
    SetStdHandle(STD_INPUT_HANDLE, input);
    SetStdHandle(STD_ERROR_HANDLE, error);
  }
  ~StandardStreams() {
    SetStdHandle(STD_INPUT_HANDLE, input_);
    SetStdHandle(STD_ERROR_HANDLE, error_);
  }

 private:
  HANDLE input_;
  HANDLE error_;
};

struct Pipe {
  Pipe() {
    HANDLE ends[2];
    if (!CreatePipe(&ends[0], &ends[1], nullptr, 0)) return;
    reader = Handle(ends[0]);
    writer = Handle(ends[1]);
  }
  void Write(std::string_view text) const {
    DWORD written;
    WriteFile(writer.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  }

  Handle reader;
  Handle writer;
};

// A console of the test's own, whose Ctrl-C reaches nobody else. Without a display it has neither
// keys nor a screen.
class Console {
 public:
  Console() {
    FreeConsole();
    AllocConsole();
    input = Open(L"CONIN$");
    screen = Open(L"CONOUT$");
  }
  ~Console() { FreeConsole(); }

  bool HasKeys() const {
    DWORD mode;
    return GetConsoleMode(input.Get(), &mode);
  }
  void Type(std::wstring_view keys) const {
    for (const wchar_t key : keys) {
      INPUT_RECORD press{};
      press.EventType = KEY_EVENT;
      press.Event.KeyEvent.bKeyDown = TRUE;
      press.Event.KeyEvent.wRepeatCount = 1;
      press.Event.KeyEvent.wVirtualKeyCode = key == L'\r' ? VK_RETURN : 0;
      press.Event.KeyEvent.uChar.UnicodeChar = key;
      DWORD written;
      WriteConsoleInputW(input.Get(), &press, 1, &written);
    }
  }
  std::wstring FirstLine(DWORD size) const {
    std::wstring text(size, L'\0');
    ReadConsoleOutputCharacterW(screen.Get(), text.data(), size, COORD{0, 0}, &size);
    return text;
  }

  Handle input;
  Handle screen;

 private:
  static Handle Open(const wchar_t* name) {
    return Handle(CreateFileW(name, GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                              nullptr));
  }

  // A new console may take their places.
  StandardStreams former_{GetStdHandle(STD_INPUT_HANDLE), GetStdHandle(STD_ERROR_HANDLE)};
};

void PressControlC() {
  GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

// The press arrives on a thread of the system's.
bool TakeNextInterrupt(WindowsTerminal& terminal) {
  for (int i = 0; i < 500; ++i) {
    if (terminal.TakeInterrupt()) return true;
    Sleep(10);
  }
  return false;
}

TEST(WindowsTerminal, EndsTheWaitForALineOnCtrlC) {
  const Console console;
  const Pipe pipe;
  const StandardStreams streams(pipe.reader.Get(), nullptr);
  WindowsTerminal terminal;
  std::thread user(PressControlC);  // before or during the wait: either ends it
  EXPECT_EQ(terminal.ReadLine(), std::nullopt);
  user.join();
  EXPECT_FALSE(terminal.TakeInterrupt()) << "it has answered the question already";

  PressControlC();
  for (int i = 0; i < 500 && !terminal.IsInterrupted(); ++i) Sleep(10);
  EXPECT_TRUE(TakeNextInterrupt(terminal));
  EXPECT_FALSE(terminal.IsInterrupted() || terminal.TakeInterrupt());
  pipe.Write("x\n");
  EXPECT_EQ(terminal.ReadLine(), "x") << "an interrupt that was taken is over";
}

TEST(WindowsTerminal, SurvivesAClosedErrorStream) {
  Pipe pipe;
  pipe.reader.Close();
  const StandardStreams streams(nullptr, pipe.writer.Get());
  EXPECT_NO_THROW(WindowsTerminal().WriteError("lost"));
}

TEST(WindowsTerminal, TalksUnicodeToAConsole) {
  const Console console;
  if (!console.HasKeys()) GTEST_SKIP() << "no display for a console";
  const StandardStreams streams(console.input.Get(), console.screen.Get());
  WindowsTerminal terminal;
  EXPECT_TRUE(terminal.CanAsk() && terminal.CanRedraw());
  EXPECT_GT(terminal.Columns(), 1);
  terminal.WriteError("\xC2\xB5g\n");
  EXPECT_EQ(console.FirstLine(2), L"\u00B5g");
  console.Type(L"Gr\u00F6\u00DFe\rnext\r");
  EXPECT_EQ(terminal.ReadLine(), "Größe");
  EXPECT_EQ(terminal.ReadLine(), "next");
  PressControlC();
  EXPECT_EQ(terminal.ReadLine(), std::nullopt);
  console.Type(L"\x1A\r");
  EXPECT_EQ(terminal.ReadLine(), std::nullopt) << "the end of input";
}

TEST(WindowsStandardStreams, TellWhenTheOutputIsLost) {
  const int former = _dup(1);
  Pipe pipe;
  pipe.reader.Close();
  std::fflush(stdout);
  const int writer =
      _open_osfhandle(reinterpret_cast<std::intptr_t>(pipe.writer.Release()), _O_BINARY);
  _dup2(writer, 1);
  _close(writer);
  const Error error = ErrorOf([] {
    WriteOutput("result");
    FlushOutput();
  });
  std::clearerr(stdout);
  _dup2(former, 1);
  _close(former);
  EXPECT_EQ(error.Number(), 75);
  EXPECT_EQ(error.Description(), "Cannot write to standard output: Broken pipe.");
}

TEST(WindowsStandardStreams, KeepTheirHandlesFromOtherFiles) {
  Handle closed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
  const StandardStreams streams(GetStdHandle(STD_INPUT_HANDLE), closed.Get());
  closed.Close();
  OccupyStandardStreams();
  EXPECT_EQ(GetStdHandle(STD_ERROR_HANDLE), INVALID_HANDLE_VALUE);
}

}  // namespace
}  // namespace korvex
