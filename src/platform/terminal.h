// The terminal that a program without a window talks to.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvex {

class Terminal {
 public:
  virtual ~Terminal() = default;

  // Whether somebody can answer: standard input and standard error are both a terminal.
  virtual bool CanAsk() const = 0;
  // Whether standard error is a terminal, so that a line can be drawn over.
  virtual bool CanRedraw() const = 0;
  virtual int Columns() const = 0;
  // UTF-8 to standard error, unbuffered. Never fails: a text that cannot be written is lost.
  virtual void WriteError(std::string_view text) = 0;
  // One line from standard input without its line end; none at the end of input or when the user
  // interrupts the wait (Ctrl-C).
  virtual std::optional<std::string> ReadLine() = 0;
  // Whether Ctrl-C was pressed; every press is answered once. The third press since the user has
  // last answered a question ends the program, whatever it is at.
  virtual bool TakeInterrupt() = 0;
  // Whether a press has not been taken yet. On any thread.
  virtual bool IsInterrupted() const = 0;
};

}  // namespace korvex
