// A terminal whose screen is a text and whose user has typed everything beforehand.
#pragma once

#include <algorithm>
#include <deque>
#include <optional>
#include <string>
#include <utility>

#include "platform/terminal.h"

namespace korvex {

class FakeTerminal : public Terminal {
 public:
  bool CanAsk() const override { return can_ask; }
  bool CanRedraw() const override { return can_redraw; }
  int Columns() const override { return columns; }
  void WriteError(std::string_view text) override {
    written += text;
    ++writes;
  }
  std::optional<std::string> ReadLine() override {
    if (typed.empty()) return std::nullopt;
    std::string line = typed.front();
    typed.pop_front();
    written += "\n";  // the terminal's echo of the user's Enter
    return line;
  }
  bool TakeInterrupt() override { return std::exchange(interrupted, false); }

  // The last line as it looks after all carriage returns.
  std::string LastLine() const {
    std::string line;
    std::size_t column = 0;
    for (const char c : written.substr(written.rfind('\n') + 1)) {
      if (c == '\r') {
        column = 0;
      } else {
        line.resize(std::max(line.size(), column + 1), ' ');
        line[column++] = c;
      }
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
  }

  bool can_ask = true;
  bool can_redraw = true;
  int columns = 80;
  std::deque<std::string> typed;
  bool interrupted = false;
  std::string written;
  int writes = 0;
};

}  // namespace korvex
