// The message loop of the one thread: where a running conversion lets the user in.
#pragma once

namespace korvex {

class MessageLoop {
 public:
  virtual ~MessageLoop() = default;

  // Serves what is waiting (a Stop click, timers, repainting) and returns.
  virtual void Yield() = 0;
};

}  // namespace korvex
