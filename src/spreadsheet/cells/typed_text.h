// Values that formats made of XML write as text.
#pragma once

#include <optional>
#include <string_view>

#include "spreadsheet/cells/typed_number.h"

namespace korvex {

// "0.25", "1E-07". What is too large becomes infinite.
std::optional<double> ReadNumber(std::string_view text);

// "#DIV/0!" and the like, and "Err:502" of programs that have more errors than there are codes.
bool IsErrorName(std::string_view text);
// #VALUE! for what is no error's name.
int ErrorCode(std::string_view name);

struct DayAndTime {
  int day;      // since 1899-12-30
  double time;  // as a part of a day

  double Serial() const { return day + time; }
};

// ISO 8601: "2002-12-03", "2002-12-03T10:15:00.5", "10:15:00" (day 0). A zone behind it does not
// count: cells hold local time.
std::optional<DayAndTime> ReadIsoDate(std::string_view text);

// A date as workbooks of Excel count it. In the 1900 date system times of day lie on 1899-12-31,
// and the days up to 1900-02-28 one number lower than they should, since 1900 counts as a leap year
// there.
TypedNumber TypeDate(DayAndTime date, bool uses_1904);

// ISO 8601 durations of days and smaller units as days: "PT06H30M00.5S".
std::optional<double> ReadIsoDuration(std::string_view text);

}  // namespace korvex
