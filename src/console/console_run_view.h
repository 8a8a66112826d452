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
  void ErrorMessage(const std::string& text) override { SetMessage(text); }
  void Message(const std::string& text) override { SetMessage(text); }
  void ProcessedFile() override { progress_.SetValue(++value_); }
  // A terminal has no idle state to show.
  void SetMessage(const std::string& text) override {
    if (running_) progress_.SetMessage(text);
  }
  void SetProgress(std::int32_t value, std::int32_t maximum) override {
    if (!running_) return;
    progress_.SetMaximum(maximum);
    progress_.SetValue(value_ = value);
  }

 private:
  ConsoleProgress& progress_;
  std::int32_t value_ = 0;
  bool running_ = false;
};

}  // namespace korvex
