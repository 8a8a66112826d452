#include "console/console_progress.h"

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

void ConsoleProgress::SetMaximum(std::int32_t maximum) {
  maximum_ = std::max(maximum, 0);
  SetValue(value_);
}

void ConsoleProgress::SetValue(std::int32_t value) {
  value_ = std::clamp(value, 0, maximum_);
  Redraw();
}

void ConsoleProgress::SetMessage(const std::string& message) {
  const bool news = message != message_;
  message_ = message;
  if (quiet_) return;
  if (terminal_.CanRedraw()) {
    Redraw();
  } else if (news && !message.empty()) {
    line_.WriteLine(message);
  }
}

void ConsoleProgress::Finish() {
  line_.Clear();
  maximum_ = 0;
  value_ = 0;
  message_.clear();
}

void ConsoleProgress::Redraw() {
  if (!quiet_ && terminal_.CanRedraw()) line_.Draw(Bar() + message_);
}

std::string ConsoleProgress::Bar() const {
  if (maximum_ == 0) return "";
  const std::int64_t filled = kBarWidth * value_ / maximum_;
  const std::int64_t percent = std::int64_t{100} * value_ / maximum_;
  const std::string maximum = std::to_string(maximum_);
  std::string bar = "[";
  bar += Repeated('#', filled) + Repeated('-', kBarWidth - filled) + "] ";
  bar += PaddedLeft(std::to_string(percent), 3) + "%  ";
  bar += PaddedLeft(std::to_string(value_), maximum.size()) + " of " + maximum + "  ";
  return bar;
}

}  // namespace korvex
