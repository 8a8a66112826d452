// Reads the values that XML formats write as text.
#pragma once

#include <optional>
#include <string_view>

#include "spreadsheet/cells/typed_number.h"

namespace korvex {

// "0.25", "1E-07". A number that is too large becomes infinite, one that is too small 0.
std::optional<double> ReadNumber(std::string_view text);

// Whether a text is "#DIV/0!" or another error's name. "Err:502" is one, too: some programs have
// more errors than there are codes.
bool IsErrorName(std::string_view text);
// The code of an error; that of #VALUE! for a name that has none.
int ErrorCode(std::string_view name);

struct DayAndTime {
  int day;      // since 1899-12-30
  double time;  // as a part of a day

  double Serial() const { return day + time; }
};

// ISO 8601: "2002-12-03", "2002-12-03T10:15:00.5", "10:15:00" (day 0). A time zone at the end is
// ignored: cells hold local time.
std::optional<DayAndTime> ReadIsoDate(std::string_view text);

// The serial number that an Excel workbook has for a date. The 1900 date system takes 1900 for a
// leap year: days up to 1900-02-28 have a number one lower than they should. Times of day lie on
// 1899-12-31.
TypedNumber TypeDate(DayAndTime date, bool uses_1904);

// ISO 8601 durations of days and smaller units as days: "PT06H30M00.5S".
std::optional<double> ReadIsoDuration(std::string_view text);

}  // namespace korvex
