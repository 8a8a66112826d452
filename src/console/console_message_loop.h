// Where a running conversion notices Ctrl-C.
#pragma once

#include <functional>
#include <utility>

#include "platform/message_loop.h"
#include "platform/terminal.h"

namespace korvex {

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
