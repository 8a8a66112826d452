// The terminal behind standard input and standard error.
//
// While it exists, Ctrl-C asks instead of ending the program (even one that a script has started in
// the background, with Ctrl-C ignored), and neither a reader that goes away nor a limit on the size
// of files ends it: writing fails instead.
// There is at most one at a time, since signals belong to the process.
#pragma once

#include <signal.h>

#include <string>

#include "platform/posix/posix_io.h"
#include "platform/terminal.h"

namespace korvex {

class PosixTerminal : public Terminal {
 public:
  PosixTerminal();
  ~PosixTerminal() override;
  PosixTerminal(const PosixTerminal&) = delete;
  PosixTerminal& operator=(const PosixTerminal&) = delete;

  bool CanAsk() const override;
  bool CanRedraw() const override;
  int Columns() const override;
  void WriteError(std::string_view text) override;
  std::optional<std::string> ReadLine() override;
  bool TakeInterrupt() override;
  bool IsInterrupted() const override;

 private:
  bool WaitForInput();
  // False at the end of input.
  bool ReadMore();

  // Written by the signal handler: ends a wait for input, even when it comes just before it.
  Descriptor wake_reader_;
  Descriptor wake_writer_;
  // Put back at the end.
  struct sigaction former_interrupt_ {};
  struct sigaction former_pipe_ {};
  struct sigaction former_file_size_ {};
  // Bytes behind the last line that was given out.
  std::string unread_;
};

}  // namespace korvex
