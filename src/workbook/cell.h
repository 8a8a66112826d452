// The value of one cell, as it crosses the border to a spreadsheet application.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvex {

enum class CellKind : std::uint8_t { kEmpty, kNumber, kDate, kBoolean, kError, kText, kElapsed };

inline bool IsDateKind(CellKind kind) {
  return kind == CellKind::kDate || kind == CellKind::kElapsed;
}

// A view: `text` is UTF-8 and belongs to whoever made the value; a worksheet's text lives until
// its workbook is closed.
//   kNumber   number
//   kDate     number = days since 1899-12-30, whatever date system the workbook uses
//   kBoolean  number = 0 or 1
//   kError    number = the application's code: 0 #NULL!, 7 #DIV/0!, 15 #VALUE!, 23 #REF!,
//             29 #NAME?, 36 #NUM!, 42 #N/A
//   kText     text, which may be empty (a formula that gives "" is not an empty cell)
//   kElapsed  a date whose format shows the time that has passed ("[h]:mm"); it makes a difference
//             for .csv and .tsv alone, which have no formats: there it is a number of days
struct CellValue {
  CellKind kind = CellKind::kEmpty;
  double number = 0;
  std::string_view text;

  static CellValue Number(double value) { return {CellKind::kNumber, value, {}}; }
  static CellValue Date(double serial) { return {CellKind::kDate, serial, {}}; }
  static CellValue Boolean(bool value) { return {CellKind::kBoolean, value ? 1.0 : 0.0, {}}; }
  static CellValue ErrorCode(int code) { return {CellKind::kError, static_cast<double>(code), {}}; }
  static CellValue Text(std::string_view text) { return {CellKind::kText, 0, text}; }

  friend bool operator==(const CellValue&, const CellValue&) = default;
};

// One-based, as the object model counts.
struct CellAddress {
  int row = 1;
  int column = 1;

  friend bool operator==(const CellAddress&, const CellAddress&) = default;
};

}  // namespace korvex
