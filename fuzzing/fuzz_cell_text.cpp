// Texts of cells as numbers and back, and number formats.
#include <cmath>
#include <string>
#include <string_view>

#include "fuzzing/fuzz_target.h"
#include "platform/error.h"
#include "spreadsheet/cells/typed_value.h"
#include "workbook/cell_text.h"

using namespace korvex;

namespace {

// The text of a number reads as the same number, up to the 15 digits that a text has.
void CheckNumber(double number) {
  const std::string text = CellText(CellValue::Number(number));
  const std::optional<double> again = ParseNumber(text);
  fuzz::Require(again.has_value(), "a number's text is a number");
  fuzz::Require(std::abs(*again - number) <= std::abs(number) * 1e-14, "a number keeps its value");
  fuzz::Require(CellText(CellValue::Number(*again)) == text, "a number's text stays");
  CellText(CellValue::Date(number));
}

void ReadText(std::string_view text) {
  DateFormOf(text);
  const CellValue value = CellFromText(text);
  fuzz::Require(CellText(value) == text, "a cell shows the text that it was given");
  const std::optional<double> number = ParseNumber(text);
  fuzz::Require(number.has_value() || value.kind == CellKind::kText, "number cells are numbers");
  if (number) CheckNumber(*number);
  try {
    fuzz::Require(number.has_value() || ToInt16(text) == 0, "what is no number is refused");
    if (number) ToInt16(text);
  } catch (const Error&) {
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryPromise promise(size);
  ReadText({reinterpret_cast<const char*>(data), size});
  return 0;
}
