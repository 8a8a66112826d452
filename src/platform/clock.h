#pragma once

#include <ctime>

namespace korvex {

class Clock {
 public:
  virtual ~Clock() = default;

  // Local date and time.
  virtual std::tm Now() const = 0;
};

}  // namespace korvex
