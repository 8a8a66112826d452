#include "console/console_run_view.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "text/text.h"

namespace korvex {
namespace {

constexpr std::int64_t kBarWidth = 20;
constexpr std::size_t kPlacesShown = 10;  // of a finding

std::string Repeated(char c, std::int64_t count) {
  return std::string(static_cast<std::size_t>(count), c);
}

std::string PaddedLeft(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

// A message of several lines as one.
std::string OneLine(const std::string& text) {
  std::string line;
  for (const std::string& part : Split(text, kLineBreak)) {
    const std::string_view trimmed = TrimBlanks(part);
    if (trimmed.empty()) continue;
    if (!line.empty()) line += ' ';
    line += trimmed;
  }
  return line;
}

}  // namespace

void ConsoleRunView::RunEnded(const RunRecord& record) {
  using Outcome = RunRecord::Outcome;
  if (record.outcome == Outcome::kStopped) return;
  if (record.options.check) {
    for (const Problem& problem : record.problems) {
      std::string line = "Problem: ";
      if (!problem.place.file.empty()) line += problem.place.file + ": ";
      line += OneLine(problem.text);
      if (!problem.cause.empty()) line += " Cause: " + OneLine(problem.cause);
      line_.WriteLine(line);
    }
  }
  if (record.outcome != Outcome::kFailed || record.options.strict) WriteFindings(record);
  if (record.outcome == Outcome::kChecked && !quiet_) {
    line_.WriteLine("Checked " + Counted(record.inputs.size(), "file") + ": " +
                    Counted(record.problems.size(), "problem") + ", " +
                    Counted(record.findings.All().size(), "note") + ".");
  }
}

// Findings are no progress: they are written when quiet, too.
void ConsoleRunView::WriteFindings(const RunRecord& record) {
  for (const Finding& finding : record.findings.All()) {
    std::string line = "Note: " + finding.text;
    const std::size_t shown = std::min(finding.places.size(), kPlacesShown);
    for (std::size_t i = 0; i < shown; ++i) {
      line += i == 0 ? " (" : "; ";
      line += PlaceText(finding.places[i]);
    }
    if (finding.count > shown) {
      line += "; and " + GroupedDigits(finding.count - shown) + " more";
    }
    line_.WriteLine(line + ")");
  }
}

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
  // Without a terminal each message is a line, and the same one is not repeated.
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
  // A count of files times 100 may need more than 32 bits, hence the wider type.
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
