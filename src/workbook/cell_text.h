// Cell values as text and texts as cell values, by US regional rules on every machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/cell.h"

namespace korvex {

// Number: at most 15 significant digits ("0.25", "1E+15", "8.33333333333333E-02"). Date: "M/d/yyyy
// h:mm:ss AM/PM", the date alone at midnight, the time alone for serials in [0, 1). Boolean:
// "True"/"False". Error: "Error 2042" (2000 + code). Empty: "".
std::string CellText(const CellValue& value);
void AppendCellText(const CellValue& value, std::string& out);

// A value in a form for programs rather than people: numbers with all the digits that tell them
// apart ("0.30000000000000004"), dates by ISO 8601 with a blank before the time ("2002-12-03
// 10:15:00", "10:15:00.250"), "TRUE" and "FALSE", errors by their name ("#N/A").
void AppendDataText(const CellValue& value, std::string& out);

// Whether a value counts as a number: Number, Boolean and Empty do, a text when it reads as one;
// dates and errors do not.
bool IsNumeric(const CellValue& value);

// Reads a text as a number: surrounding blanks, a sign before or after, "(5)", "$1,234.5", "1e5",
// "&H10", "5.". None for everything else ("5%", "1/2", "1:00", ".", "1.2.3", "1E+400", "NaN").
std::optional<double> ParseNumber(std::string_view text);

// Converts a text to a 16-bit integer, halves to even. Error 13 when it is no number, 6 when it is
// out of range.
std::int16_t ToInt16(std::string_view text);

// The value that a cell takes when a text is written into it: a Number when the text is exactly the
// plain form of that number ("17", "-0.25"; never with an exponent), else the Text itself.
CellValue CellFromText(std::string_view text);

}  // namespace korvex
