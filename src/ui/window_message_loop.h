#pragma once

#include "platform/message_loop.h"

namespace korvex {

class WindowMessageLoop : public MessageLoop {
 public:
  // Does nothing when it is called from what it serves.
  void Yield() override;

 private:
  bool serving_ = false;
};

}  // namespace korvex
