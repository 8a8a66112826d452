// What a number in a cell counts as, in every format: a number, or a date.
#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>

#include "workbook/cell.h"
#include "workbook/cell_error.h"

namespace korvex {

// Days that a serial number of the 1904 date system lies behind the same day's 1900 number.
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

}  // namespace korvex
