// What a number or a text that a file holds counts as in a cell, in every format.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

#include "workbook/cell.h"
#include "workbook/cell_error.h"

namespace korvex {

// How much smaller the number of a day is in the 1904 date system than in that of 1900.
inline constexpr int kDaysTo1904 = 1462;

// What a number format shows of a date.
enum class DateForm : std::uint8_t {
  kNone,
  kMoment,
  kElapsed,  // the time that has passed: "[h]:mm"
};

// Of a number format that workbooks use by id alone, without writing it down.
DateForm BuiltInDateForm(int id);

// A format text shows a date when it has a d, m, y, h or s that stands for part of one. Quoted
// texts, escaped and filling characters and colours, conditions and locales in brackets do not
// count.
DateForm DateFormOf(std::string_view format);

struct TypedNumber {
  CellKind kind;
  double number;
};

// A number whose format shows a date becomes a Date, counted in the 1900 date system, as long as it
// lies within the years 1900 to 9999; an infinite number becomes #NUM!.
inline TypedNumber TypeNumber(double number, DateForm form, bool uses_1904) {
  constexpr double kDateLimit = 2958466;  // the day after 9999-12-31
  if (!std::isfinite(number)) return {CellKind::kError, kNumberError};
  if (form != DateForm::kNone) {
    const double serial = uses_1904 ? number + kDaysTo1904 : number;
    const CellKind kind = form == DateForm::kElapsed ? CellKind::kElapsed : CellKind::kDate;
    if (serial >= 0 && serial < kDateLimit) return {kind, serial};
  }
  return {CellKind::kNumber, number};
}

// The values that XML formats write as text.

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
