// A run as the terminal shows it.
#pragma once

#include "console/console_progress.h"
#include "engine/MainRun.h"

namespace korvex {

class ConsoleRunView : public RunView {
 public:
  // `progress` must outlive the view.
  explicit ConsoleRunView(ConsoleProgress& progress) : progress_(progress) {}

  void EnterRunning() override { running_ = true; }
  void LeaveRunning() override {
    running_ = false;
    progress_.Finish();
  }
  // A terminal has no idle state to show.
  void SetMessage(const std::string& text) override {
    if (running_) progress_.SetMessage(text);
  }
  void SetProgress(std::int32_t value, std::int32_t maximum) override {
    if (!running_) return;
    progress_.SetMaximum(maximum);
    progress_.SetValue(value);
  }

 private:
  ConsoleProgress& progress_;
  bool running_ = false;
};

}  // namespace korvex
