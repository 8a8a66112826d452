// A run as the terminal shows it, on standard error: one line that is drawn over on a terminal,
// else each message on a line of its own.
#pragma once

#include <cstdint>
#include <string>

#include "console/console_line.h"
#include "engine/MainRun.h"

namespace korvex {

// Shows nothing between runs: a terminal has no idle state.
class ConsoleRunView : public RunView {
 public:
  // Shows nothing at all when `quiet`. Both must outlive the view.
  ConsoleRunView(Terminal& terminal, ConsoleLine& line, bool quiet)
      : terminal_(terminal), line_(line), quiet_(quiet) {}

  void EnterRunning() override { running_ = true; }
  // Takes the bar off the terminal.
  void LeaveRunning() override;
  void ErrorMessage(const std::string& text) override { SetMessage(text); }
  void Message(const std::string& text) override { SetMessage(text); }
  void ProcessedFile() override;
  void SetMessage(const std::string& text) override;
  void SetProgress(std::int32_t value, std::int32_t maximum) override;
  // Writes a line for each finding of a run that finished or was strict, also when quiet; of a
  // check its problems, too, and unless quiet a line when there is nothing.
  void RunEnded(const RunRecord& record) override;

 private:
  void Redraw();
  std::string Bar() const;
  void WriteFindings(const RunRecord& record);

  Terminal& terminal_;
  ConsoleLine& line_;
  const bool quiet_;
  bool running_ = false;
  std::int32_t value_ = 0;
  std::int32_t maximum_ = 0;
  std::string message_;
};

}  // namespace korvex
