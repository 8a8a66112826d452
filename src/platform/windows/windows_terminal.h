// The terminal behind standard input and standard error: a console, or pipes and files of bytes.
//
// While it exists, Ctrl-C asks instead of ending the program, even one that was started with Ctrl-C
// ignored; Ctrl-Break and closing the console go on to end it. There is at most one at a time.
#pragma once

#include <string>

#include "platform/terminal.h"

namespace korvex {

class WindowsTerminal : public Terminal {
 public:
  WindowsTerminal();
  ~WindowsTerminal() override;
  WindowsTerminal(const WindowsTerminal&) = delete;
  WindowsTerminal& operator=(const WindowsTerminal&) = delete;

  bool CanAsk() const override;
  bool CanRedraw() const override;
  int Columns() const override;
  // As UTF-16 to a console, whose code page may lack characters; as UTF-8 to a pipe or file.
  void WriteError(std::string_view text) override;
  std::optional<std::string> ReadLine() override;
  bool TakeInterrupt() override;
  bool IsInterrupted() const override;

 private:
  // What a look for input has found: bytes, the end of them, or Ctrl-C.
  enum class Input { kMore, kEnd, kInterrupted };

  Input WaitForInput();
  Input ReadMore();
  Input ReadFromConsole();
  Input ReadFromStream();

  // UTF-8 behind the last line that was given out.
  std::string unread_;
};

}  // namespace korvex
