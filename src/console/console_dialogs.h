// Messages and questions on a terminal: the text and its captions on standard error, the answer
// from standard input.
//
// An answer is a caption, its first letter when no other caption begins with it, or its number
// (1 is the first); letter case does not count, and an empty line is the default button. When
// nobody can answer (no terminal, end of input, Ctrl-C) it is the first caption, but Cancel for a
// plain question: nothing is replaced or tried again unasked. A single caption asks for no answer.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "console/console_line.h"
#include "platform/dialogs.h"

namespace korvex {

class ConsoleDialogs : public Dialogs {
 public:
  // Both must outlive the dialogs.
  ConsoleDialogs(Terminal& terminal, ConsoleLine& line) : terminal_(terminal), line_(line) {}

  BoxAnswer ShowPlain(const PlainMessage& message) override;
  std::string ShowButtons(const ButtonMessage& message) override;
  // There is nothing to browse with: always empty.
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;

 private:
  std::optional<std::size_t> Ask(const std::vector<std::string>& captions,
                                 std::size_t default_button);
  std::size_t Answer(const std::vector<std::string>& captions, std::size_t default_button,
                     std::size_t unanswered);

  Terminal& terminal_;
  ConsoleLine& line_;
};

// Where a running conversion notices Ctrl-C.
class ConsoleMessageLoop : public MessageLoop {
 public:
  // `on_interrupt` is called from Yield. `terminal` must outlive the loop.
  ConsoleMessageLoop(Terminal& terminal, std::function<void()> on_interrupt)
      : terminal_(terminal), on_interrupt_(std::move(on_interrupt)) {}

  void Yield() override {
    if (terminal_.TakeInterrupt()) on_interrupt_();
  }

 private:
  Terminal& terminal_;
  std::function<void()> on_interrupt_;
};

}  // namespace korvex
