// The progress of a run on standard error: one line that is drawn over on a terminal, else each
// message on a line of its own.
#pragma once

#include <cstdint>
#include <string>

#include "console/console_line.h"

namespace korvex {

class ConsoleProgress {
 public:
  // Shows nothing at all when `quiet`. Both must outlive the progress.
  ConsoleProgress(Terminal& terminal, ConsoleLine& line, bool quiet)
      : terminal_(terminal), line_(line), quiet_(quiet) {}

  void SetMaximum(std::int32_t maximum);
  void SetValue(std::int32_t value);
  void SetMessage(const std::string& message);
  // Takes the bar off the terminal.
  void Finish();

 private:
  void Redraw();
  std::string Bar() const;

  Terminal& terminal_;
  ConsoleLine& line_;
  bool quiet_;
  std::int32_t maximum_ = 0;
  std::int32_t value_ = 0;
  std::string message_;
};

}  // namespace korvex
