#pragma once

#include "platform/clock.h"

namespace korvex {

class SystemClock : public Clock {
 public:
  std::tm Now() const override;
};

}  // namespace korvex
