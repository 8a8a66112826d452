#include "platform/windows/system_clock.h"

#include "platform/windows/windows_api.h"

namespace korvex {

// Asked of the system: the C library takes the time zone from an environment variable that tools of
// other systems set in another form.
std::tm SystemClock::Now() const {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  std::tm local{};
  local.tm_year = now.wYear - 1900;
  local.tm_mon = now.wMonth - 1;
  local.tm_mday = now.wDay;
  local.tm_wday = now.wDayOfWeek;
  local.tm_hour = now.wHour;
  local.tm_min = now.wMinute;
  local.tm_sec = now.wSecond;
  local.tm_isdst = -1;
  return local;
}

}  // namespace korvex
