#include "console/console_run_view.h"

#include <algorithm>
#include <cstddef>

namespace korvex {
namespace {

constexpr std::int64_t kBarWidth = 20;

std::string Repeated(char c, std::int64_t count) {
  return std::string(static_cast<std::size_t>(count), c);
}

std::string PaddedLeft(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

}  // namespace

void ConsoleRunView::LeaveRunning() {
  running_ = false;
  line_.Clear();
  maximum_ = 0;
  value_ = 0;
  message_.clear();
}

// The run counts on even where it has reached its maximum; what is shown stays within it.
void ConsoleRunView::ProcessedFile() {
  ++value_;
  Redraw();
}

void ConsoleRunView::SetMessage(const std::string& text) {
  if (!running_) return;
  const bool is_new = text != message_;
  message_ = text;
  if (quiet_) return;
  if (terminal_.CanRedraw()) {
    Redraw();
  } else if (is_new && !text.empty()) {
    line_.WriteLine(text);
  }
}

void ConsoleRunView::SetProgress(std::int32_t value, std::int32_t maximum) {
  if (!running_) return;
  maximum_ = std::max(maximum, 0);
  value_ = value;
  Redraw();
}

void ConsoleRunView::Redraw() {
  if (!quiet_ && terminal_.CanRedraw()) line_.Draw(Bar() + message_);
}

std::string ConsoleRunView::Bar() const {
  if (maximum_ == 0) return "";
  const std::int32_t value = std::clamp(value_, 0, maximum_);
  const std::int64_t filled = kBarWidth * value / maximum_;
  const std::int64_t percent = std::int64_t{100} * value / maximum_;
  const std::string maximum = std::to_string(maximum_);
  std::string bar = "[";
  bar += Repeated('#', filled) + Repeated('-', kBarWidth - filled) + "] ";
  bar += PaddedLeft(std::to_string(percent), 3) + "%  ";
  bar += PaddedLeft(std::to_string(value), maximum.size()) + " of " + maximum + "  ";
  return bar;
}

}  // namespace korvex
