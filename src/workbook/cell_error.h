// The error values that a cell can hold: their codes and names.
#pragma once

#include <string_view>

namespace korvex {

struct CellError {
  int code;  // as workbooks store it; CellValue::number of an error
  std::string_view name;
};

inline constexpr int kNoValueError = 15;  // used for errors that have no code
inline constexpr int kNumberError = 36;
inline constexpr int kNotAvailableError = 42;

inline constexpr CellError kCellErrors[] = {
    {0, "#NULL!"},  {7, "#DIV/0!"},          {kNoValueError, "#VALUE!"},  {23, "#REF!"},
    {29, "#NAME?"}, {kNumberError, "#NUM!"}, {kNotAvailableError, "#N/A"}};

constexpr bool IsErrorCode(int code) {
  for (const CellError& error : kCellErrors) {
    if (error.code == code) return true;
  }
  return false;
}

// "#N/A" for 42; "#VALUE!" for a code that is not in the table.
constexpr std::string_view ErrorName(int code) {
  for (const CellError& error : kCellErrors) {
    if (error.code == code) return error.name;
  }
  return ErrorName(kNoValueError);
}

}  // namespace korvex
