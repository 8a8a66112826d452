// A value as it crosses to another program by automation: a VARIANT with an owner.
#pragma once

#include <string>
#include <string_view>

#include "platform/windows/windows_api.h"

#include <oaidl.h>

namespace korvex {

// Numbers, dates and currency read and write as in the United States, whatever the user's settings.
inline constexpr LCID kAutomationLocale = 1033;

// Owns whatever the VARIANT holds: a text, an array, a reference to an object.
class ComValue {
 public:
  ComValue() { VariantInit(&variant_); }
  ComValue(bool value);
  ComValue(int value);
  ComValue(double value);
  ComValue(std::string_view utf8);
  ComValue(const std::string& utf8) : ComValue(std::string_view(utf8)) {}
  ComValue(const char* utf8) : ComValue(std::string_view(utf8)) {}
  // A serial number of cells, counted from 1899-12-30.
  static ComValue Date(double serial);
  // `code` is the spreadsheet's own (7 for #DIV/0!).
  static ComValue CellError(int code);
  static ComValue Array(SAFEARRAY* grid);     // of VARIANTs; takes it over
  static ComValue Object(IDispatch* object);  // takes the reference over

  ComValue(const ComValue& other);
  ComValue(ComValue&& other) noexcept;
  ComValue& operator=(ComValue other) noexcept;
  ~ComValue() { VariantClear(&variant_); }

  VARTYPE Type() const { return variant_.vt; }
  const VARIANT& Raw() const { return variant_; }
  // For a callee to fill; frees what was held first.
  VARIANT* Receive();
  // The caller takes over what was held; this is empty then.
  VARIANT Release();

  // Converts where the value is of another type. Error 13 when it cannot be converted.
  std::string Text() const;
  int Integer() const;

 private:
  ComValue Converted(VARTYPE type) const;

  VARIANT variant_;
};

// A copy of the text as the system wants it; error 7 when there is no memory for it.
BSTR NewComText(std::string_view utf8);

}  // namespace korvex
