#include "platform/posix/system_clock.h"

namespace korvex {

std::tm SystemClock::Now() const {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local;
}

}  // namespace korvex
