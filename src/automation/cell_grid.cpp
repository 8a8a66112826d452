#include "automation/cell_grid.h"

#include <oleauto.h>

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/windows/wide_text.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr std::size_t kLongestAddress = 255;

std::string CellName(CellAddress cell) {
  return ColumnLetters(cell.column) + std::to_string(cell.row);
}

// The days that the application has dates for: up to the end of the year 9999. What COM means by a
// negative date is another one.
bool IsDateOfCells(double serial) {
  return serial >= 0 && serial < 2'958'466;
}

constexpr int kFirstCellError = 2000;
constexpr int kLargestErrorCode = 255;
constexpr int kValueError = 15;  // #VALUE!

[[noreturn]] void RefuseType(VARTYPE type) {
  throw Error(error_number::kTypeMismatch,
              "Type mismatch: the spreadsheet application answered with a value of type " +
                  std::to_string(type) + ", which is no value of cells.");
}

int ErrorCodeFrom(SCODE code) {
  const int number = static_cast<int>(code & 0xFFFF) - kFirstCellError;
  // A number outside of this range is no error of a cell.
  return number >= 0 && number <= kLargestErrorCode ? number : kValueError;
}

int Length(SAFEARRAY* array, UINT dimension) {
  LONG first = 0;
  LONG last = -1;
  SafeArrayGetLBound(array, dimension, &first);
  SafeArrayGetUBound(array, dimension, &last);
  return std::max<int>(0, last - first + 1);
}

}  // namespace

GridView::GridView(const ComValue& value) : cells_(&value.Raw()) {
  if ((value.Type() & VT_ARRAY) == 0) return;
  SAFEARRAY* const array = value.Raw().parray;
  // A range of several cells has a table of values and nothing else.
  if (value.Type() != (VT_ARRAY | VT_VARIANT) || SafeArrayGetDim(array) != 2) {
    RefuseType(value.Type());
  }
  void* data = nullptr;
  if (FAILED(SafeArrayAccessData(array, &data))) throw Error(error_number::kOutOfMemory);
  array_ = array;
  cells_ = static_cast<const VARIANT*>(data);
  rows_ = Length(array, 1);
  columns_ = Length(array, 2);
}

GridView::~GridView() {
  if (array_ != nullptr) SafeArrayUnaccessData(array_);
}

bool GridView::HoldsCurrency() const {
  return std::any_of(cells_, cells_ + rows_ * columns_,
                     [](const VARIANT& cell) { return cell.vt == VT_CY; });
}

GridBuilder::GridBuilder(int rows, int columns) : rows_(rows) {
  SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(rows), 1}, {static_cast<ULONG>(columns), 1}};
  array_ = SafeArrayCreate(VT_VARIANT, 2, bounds);
  if (array_ == nullptr) throw Error(error_number::kOutOfMemory);
  SafeArrayAccessData(array_, reinterpret_cast<void**>(&cells_));
}

GridBuilder::~GridBuilder() {
  // Take() has given it away.
  if (array_ == nullptr) return;
  SafeArrayUnaccessData(array_);
  SafeArrayDestroy(array_);
}

void GridBuilder::Set(int row, int column, ComValue value) {
  // The first dimension runs fastest, so a column lies together in memory.
  cells_[column * rows_ + row] = value.Release();
}

ComValue GridBuilder::Take() {
  SafeArrayUnaccessData(array_);
  return ComValue::Array(std::exchange(array_, nullptr));
}

CellValue CellFrom(const VARIANT& value, std::string& text) {
  switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
      return {};
    case VT_R8:
      return CellValue::Number(value.dblVal);
    case VT_DATE:
      return CellValue::Date(value.date);
    case VT_BOOL:
      return CellValue::Boolean(value.boolVal != VARIANT_FALSE);
    case VT_ERROR:
      return CellValue::ErrorCode(ErrorCodeFrom(value.scode));
    case VT_BSTR:
      text = FromWide({value.bstrVal, SysStringLen(value.bstrVal)});
      return CellValue::Text(text);
    default:
      break;
  }
  // The other kinds of numbers, currency among them.
  VARIANT source = value;
  VARIANT number;
  VariantInit(&number);
  // In a fixed locale: the user's own would decide what a decimal point is.
  if (FAILED(VariantChangeTypeEx(&number, &source, kAutomationLocale, 0, VT_R8))) {
    RefuseType(value.vt);
  }
  return CellValue::Number(number.dblVal);
}

ComValue ComValueOf(const CellValue& cell) {
  switch (cell.kind) {
    case CellKind::kEmpty:
      break;
    case CellKind::kNumber:
      return ComValue(cell.number);
    case CellKind::kDate:
    case CellKind::kElapsed:
      // As a number it has the right value, though not the format.
      return IsDateOfCells(cell.number) ? ComValue::Date(cell.number) : ComValue(cell.number);
    case CellKind::kBoolean:
      return ComValue(cell.number != 0);
    case CellKind::kError:
      return ComValue::CellError(static_cast<int>(cell.number));
    case CellKind::kText:
      return ComValue(cell.text);
  }
  return {};
}

std::string RangeAddress(CellAddress first, CellAddress last) {
  return first == last ? CellName(first) : CellName(first) + ":" + CellName(last);
}

std::vector<std::string> JoinAddresses(const std::vector<std::string>& addresses) {
  std::vector<std::string> joined;
  for (const std::string& address : addresses) {
    // Each call costs milliseconds, so as many ranges as fit go into one.
    if (joined.empty() || joined.back().size() + 1 + address.size() > kLongestAddress) {
      joined.push_back(address);
    } else {
      joined.back() += "," + address;
    }
  }
  return joined;
}

}  // namespace korvex
