#include "automation/com_value.h"

#include <utility>

#include "platform/error.h"
#include "platform/windows/wide_text.h"

namespace korvex {
namespace {

// A cell's error is a result of the facility for controls, with the error code added to a base.
constexpr SCODE kFirstCellError = static_cast<SCODE>(0x800A0000 + 2000);

}  // namespace

BSTR NewComText(std::string_view utf8) {
  const std::wstring wide = ToWide(utf8);
  const BSTR text = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  if (text == nullptr) throw Error(error_number::kOutOfMemory);
  return text;
}

ComValue::ComValue(bool value) : ComValue() {
  variant_.vt = VT_BOOL;
  variant_.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
}

ComValue::ComValue(int value) : ComValue() {
  variant_.vt = VT_I4;
  variant_.lVal = value;
}

ComValue::ComValue(double value) : ComValue() {
  variant_.vt = VT_R8;
  variant_.dblVal = value;
}

ComValue::ComValue(std::string_view utf8) : ComValue() {
  // The type follows once there is a text: without memory for it, nothing must be freed.
  variant_.bstrVal = NewComText(utf8);
  variant_.vt = VT_BSTR;
}

ComValue ComValue::Date(double serial) {
  ComValue value(serial);
  value.variant_.vt = VT_DATE;
  return value;
}

ComValue ComValue::CellError(int code) {
  ComValue value;
  value.variant_.vt = VT_ERROR;
  value.variant_.scode = kFirstCellError + code;
  return value;
}

ComValue ComValue::Array(SAFEARRAY* grid) {
  ComValue value;
  value.variant_.vt = VT_ARRAY | VT_VARIANT;
  value.variant_.parray = grid;
  return value;
}

ComValue ComValue::Object(IDispatch* object) {
  ComValue value;
  value.variant_.vt = VT_DISPATCH;
  value.variant_.pdispVal = object;
  return value;
}

ComValue::ComValue(const ComValue& other) : ComValue() {
  // The system's functions take a pointer to what they only read.
  VARIANT source = other.variant_;
  if (FAILED(VariantCopy(&variant_, &source))) throw Error(error_number::kOutOfMemory);
}

ComValue::ComValue(ComValue&& other) noexcept : variant_(other.Release()) {}

ComValue& ComValue::operator=(ComValue other) noexcept {
  std::swap(variant_, other.variant_);
  return *this;
}

VARIANT* ComValue::Receive() {
  VariantClear(&variant_);
  return &variant_;
}

VARIANT ComValue::Release() {
  const VARIANT held = variant_;
  VariantInit(&variant_);
  return held;
}

ComValue ComValue::Converted(VARTYPE type) const {
  ComValue result;
  VARIANT source = variant_;
  if (FAILED(VariantChangeTypeEx(&result.variant_, &source, kAutomationLocale, 0, type))) {
    throw Error(error_number::kTypeMismatch,
                "Type mismatch: the spreadsheet application answered with a value of type " +
                    std::to_string(variant_.vt) + ", not " + std::to_string(type) + ".");
  }
  return result;
}

std::string ComValue::Text() const {
  const ComValue text = Converted(VT_BSTR);
  const BSTR raw = text.variant_.bstrVal;
  return FromWide({raw, SysStringLen(raw)});
}

int ComValue::Integer() const {
  return Converted(VT_I4).variant_.lVal;
}

}  // namespace korvex
