// The last line of the terminal: progress is drawn there, and cleared before a message is written.
//
// Everything that a program without a window says goes through here: line ends become LF, and
// control characters of file names and cells become "?", since a terminal would obey them.
#pragma once

#include <string>
#include <string_view>

#include "platform/terminal.h"

namespace korvex {

class ConsoleLine {
 public:
  // `terminal` must outlive the line.
  explicit ConsoleLine(Terminal& terminal) : terminal_(terminal) {}

  // Shows one line of text, cut to the width of the window, in place of the one drawn before. Does
  // nothing when the text is the same.
  void Draw(std::string_view text);
  // Wipes what was drawn.
  void Clear();
  // Wipes what was drawn and writes a text on lines of its own.
  void WriteLine(std::string_view text);
  // The same without a line end, for a question.
  void Write(std::string_view text);

 private:
  Terminal& terminal_;
  std::string drawn_;
};

}  // namespace korvex
