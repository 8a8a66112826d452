#include "tests/automation/server/scripted_application.h"

#include <oleauto.h>

#include <algorithm>

#include "automation/cell_grid.h"
#include "platform/error.h"
#include "platform/windows/wide_text.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

constexpr int kNameError = 29;

std::string Shown(const ComValue& value) {
  if (value.Type() == VT_EMPTY) return "";
  if (value.Type() == VT_BOOL) return value.Raw().boolVal == VARIANT_FALSE ? "False" : "True";
  if ((value.Type() & VT_ARRAY) == 0) return value.Text();
  std::string text;
  for (UINT dimension = 1; dimension <= SafeArrayGetDim(value.Raw().parray); ++dimension) {
    LONG last = 0;
    SafeArrayGetUBound(value.Raw().parray, dimension, &last);
    text += (dimension > 1 ? " x " : "[") + std::to_string(last);
  }
  return text + "]";
}

ComValue Copy(VARIANTARG& argument) {
  ComValue value;
  VariantCopyInd(value.Receive(), &argument);
  return value;
}

// What the application makes of a text that somebody types.
CellValue Typed(const std::string& text) {
  if (text.starts_with('\'')) return CellValue::Text(std::string_view(text).substr(1));
  if (text.starts_with('=')) return CellValue::ErrorCode(kNameError);
  if (const auto number = ParseNumber(text)) return CellValue::Number(*number);
  const bool has_digit = text.find_first_of("0123456789") != std::string::npos;
  if (has_digit && text.find_first_not_of("0123456789/-: ") == std::string::npos) {
    return CellValue::Date(37593);
  }
  return CellValue::Text(text);
}

CellAddress ParseCell(const std::string& name) {
  CellAddress cell{0, 0};
  for (const char c : name) {
    if (c >= 'A') {
      cell.column = cell.column * 26 + (c - 'A' + 1);
    } else {
      cell.row = cell.row * 10 + (c - '0');
    }
  }
  return cell;
}

struct Area {
  CellAddress first, last;
};

std::vector<Area> ParseAddress(const std::string& address) {
  if (address.empty()) return {{{1, 1}, {65536, 256}}};
  if (address.size() > 255) throw Error(error_number::kAutomation);
  std::vector<Area> areas;
  for (const std::string& part : Split(address, ",")) {
    const std::vector<std::string> corners = Split(part, ":");
    areas.push_back({ParseCell(corners.front()), ParseCell(corners.back())});
  }
  return areas;
}

// Calls `take` with the place of every cell of an area: in a grid, whose two indices count from 1,
// and in the sheet.
template <class Take>
void ForEachCell(const Area& area, Take take) {
  for (int row = area.first.row; row <= area.last.row; ++row) {
    for (int column = area.first.column; column <= area.last.column; ++column) {
      LONG at[] = {row - area.first.row + 1, column - area.first.column + 1};
      take(at, CellAddress{row, column});
    }
  }
}

// A member that answers with nothing.
template <class Action>
auto Do(Action action) {
  return [action](const ScriptedCall& call) {
    action(call);
    return ComValue();
  };
}

// A member whose answer depends on no argument.
template <class Answer>
auto Give(Answer answer) {
  return [answer](const ScriptedCall&) { return ComValue(answer()); };
}

}  // namespace

std::string ScriptedCall::Text() const {
  if (is_put) return member + " = " + Shown(arguments.back());
  std::vector<std::string> list;
  for (const ComValue& value : arguments) list.push_back(Shown(value));
  // The names in the order of the alphabet: their order means nothing.
  for (const auto& [name, value] : named) list.push_back(name + ":=" + Shown(value));
  return list.empty() ? member : member + "(" + Join(list, ", ") + ")";
}

ScriptedObject::ScriptedObject(ScriptedProgram& program, std::string kind, Members members)
    : program_(program), kind_(std::move(kind)), members_(std::move(members)) {
  ++program_.objects;
}

ScriptedObject::~ScriptedObject() {
  if (--program_.objects == 0 && program_.on_last_release) program_.on_last_release();
}

HRESULT ScriptedObject::QueryInterface(REFIID id, void** object) {
  const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch);
  *object = is_known ? this : nullptr;
  if (!is_known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG ScriptedObject::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT ScriptedObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale,
                                      DISPID* ids) {
  if (locale != kAutomationLocale) return DISP_E_UNKNOWNLCID;
  for (UINT i = 0; i < count; ++i) {
    auto known = std::ranges::find(program_.names, std::wstring_view(names[i]));
    if (known == program_.names.end()) known = program_.names.insert(known, names[i]);
    ids[i] = static_cast<DISPID>(known - program_.names.begin());
  }
  return S_OK;
}

ScriptedCall ScriptedObject::CallFrom(DISPID member, WORD flags,
                                      const DISPPARAMS& parameters) const {
  const auto name = [this](DISPID id) {
    return FromWide(program_.names.at(static_cast<std::size_t>(id)));
  };
  ScriptedCall call;
  call.member = name(member);
  call.is_put = (flags & DISPATCH_PROPERTYPUT) != 0;
  const UINT named = call.is_put ? 0 : parameters.cNamedArgs;
  for (UINT i = 0; i < named; ++i) {
    call.named[name(parameters.rgdispidNamedArgs[i])] = Copy(parameters.rgvarg[i]);
  }
  for (UINT i = parameters.cArgs; i > named; --i) {
    call.arguments.push_back(Copy(parameters.rgvarg[i - 1]));
  }
  return call;
}

HRESULT ScriptedObject::Invoke(DISPID id, REFIID, LCID locale, WORD flags, DISPPARAMS* parameters,
                               VARIANT* result, EXCEPINFO* exception, UINT*) {
  if (program_.busy_calls > 0) {
    --program_.busy_calls;
    return RPC_E_CALL_REJECTED;
  }
  if (locale != kAutomationLocale) return DISP_E_UNKNOWNLCID;
  const ScriptedCall call = CallFrom(id, flags, *parameters);
  const std::string text = kind_ + "." + call.Text();
  program_.calls.push_back(text);
  if (program_.log) program_.log(text);
  if (text == program_.dies_at) program_.die();
  const auto member = members_.find(call.member);
  if (member == members_.end()) return DISP_E_MEMBERNOTFOUND;
  try {
    ComValue answer = member->second(call);
    if (result != nullptr) *result = answer.Release();
    return S_OK;
  } catch (const Error& error) {
    if (error.Number() == error_number::kSubscript) return DISP_E_BADINDEX;
    *exception = {};
    exception->scode = static_cast<SCODE>(0x800A0000u | static_cast<unsigned>(error.Number()));
    exception->bstrSource = NewComText("Scripted");
    exception->bstrDescription = NewComText(error.Description());
    return DISP_E_EXCEPTION;
  }
}

ComValue ScriptedApplication::Object(const std::string& kind, ScriptedObject::Members members) {
  return ComValue::Object(new ScriptedObject(program, kind, std::move(members)));
}

ScriptedObject* ScriptedApplication::Root() {
  const ScriptedObject::Members workbooks = {
      // The format is not known yet, so it has the room of the larger one.
      {"Add", Give([this] { return OfWorkbook(application_.AddWorkbook("Book.xlsx")); })},
      {"Open", [this](const ScriptedCall& call) {
         return OfWorkbook(application_.OpenWorkbook(call.named.at("Filename").Text(), {}));
       }}};
  const auto ignore = Do([](const ScriptedCall&) {});
  return new ScriptedObject(
      program, "Application",
      {{"AutomationSecurity", ignore},
       {"DisplayAlerts", ignore},
       {"ScreenUpdating", ignore},
       {"Visible", ignore},
       {"Version", Give([this] { return version; })},
       {"Workbooks", Give([=, this] { return Object("Workbooks", workbooks); })},
       {"Quit", Do([this](const ScriptedCall&) { application_.Quit(); })}});
}

ComValue ScriptedApplication::OfWorkbook(Workbook& workbook) {
  const auto save = [&workbook](const ScriptedCall& call) {
    const std::string name = call.named.at("Filename").Text();
    const bool is_xlsx = call.named.at("FileFormat").Integer() == 51;
    // The real one makes a file that it will not open again without complaint.
    if (is_xlsx != name.ends_with(".xlsx")) throw Error(error_number::kAutomation, "FileFormat");
    workbook.SaveAs(name);
  };
  const auto close = [&workbook](const ScriptedCall& call) {
    if (Shown(call.named.at("SaveChanges")) != "False") throw Error(error_number::kAutomation);
    workbook.Close();
  };
  return Object("Workbook", {{"Name", Give([&workbook] { return workbook.Name(); })},
                             {"Worksheets", Give([&, this] { return OfWorksheets(workbook); })},
                             {"SaveAs", Do(save)},
                             {"Close", Do(close)}});
}

ComValue ScriptedApplication::OfWorksheets(Workbook& workbook) {
  return Object("Worksheets", {{"Count", Give([&workbook] { return workbook.WorksheetCount(); })},
                               {"Item", [this, &workbook](const ScriptedCall& call) {
                                  const ComValue& which = call.arguments.at(0);
                                  return OfWorksheet(which.Type() == VT_BSTR
                                                         ? workbook.Worksheets(which.Text())
                                                         : workbook.Worksheets(which.Integer()));
                                }}});
}

ComValue ScriptedApplication::OfWorksheet(Worksheet& sheet) {
  const auto name = [&sheet](const ScriptedCall& call) {
    if (call.is_put) sheet.SetName(call.arguments.back().Text());
    return ComValue(sheet.Name());
  };
  const auto range = [this, &sheet](const ScriptedCall& call) {
    return OfRange(sheet, call.arguments.at(0).Text());
  };
  const auto used = [this, &sheet] {
    return OfRange(sheet, RangeAddress({1, 1}, sheet.LastCell()));
  };
  return Object("Worksheet", {{"Name", name},
                              {"Index", Give([&sheet] { return sheet.Index(); })},
                              {"Range", range},
                              {"Cells", Give([this, &sheet] { return OfRange(sheet, ""); })},
                              {"UsedRange", Give(used)},
                              {"Activate", Do([&sheet](const ScriptedCall&) { sheet.Activate(); })},
                              {"Delete", Do([&sheet](const ScriptedCall&) { sheet.Delete(); })}});
}

ComValue ScriptedApplication::OfRange(Worksheet& sheet, const std::string& address) {
  const std::vector<Area> areas = ParseAddress(address);
  const auto [first, last] = areas.front();
  const auto count = [this](const char* kind, int number) {
    return Give([=, this] { return Object(kind, {{"Count", Give([number] { return number; })}}); });
  };
  const auto last_cell = [this, &sheet] {
    if (is_protected) throw Error(error_number::kAutomation, "The sheet is protected.");
    return OfRange(sheet, RangeAddress(sheet.LastCell(), sheet.LastCell()));
  };
  const auto value = [this, &sheet, area = areas.front()](const ScriptedCall& call) {
    if (call.is_put) {
      const VARIANT& given = call.arguments.back().Raw();
      ForEachCell(area, [&](LONG* at, CellAddress cell) {
        ComValue element;
        if ((given.vt & VT_ARRAY) != 0) SafeArrayGetElement(given.parray, at, element.Receive());
        Type(sheet, cell, (given.vt & VT_ARRAY) != 0 ? element.Raw() : given);
      });
      return ComValue();
    }
    const bool exact = call.member == "Value2";
    if (area.first == area.last) return ValueOf(sheet, area.first, exact);
    SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(area.last.row - area.first.row + 1), 1},
                               {static_cast<ULONG>(area.last.column - area.first.column + 1), 1}};
    SAFEARRAY* const array = SafeArrayCreate(VT_VARIANT, 2, bounds);
    ForEachCell(area, [&](LONG* at, CellAddress cell) {
      const ComValue element = ValueOf(sheet, cell, exact);
      VARIANT raw = element.Raw();
      SafeArrayPutElement(array, at, &raw);
    });
    return ComValue::Array(array);
  };
  const auto format = [this, &sheet, areas](const ScriptedCall& call) {
    if (call.arguments.back().Text() != "@") throw Error(error_number::kAutomation);
    for (const Area& area : areas) {
      ForEachCell(area, [&](LONG*, CellAddress cell) {
        text_cells_[&sheet].insert({cell.row, cell.column});
      });
    }
  };
  const auto clear = [this, &sheet](const ScriptedCall&) {
    text_cells_.erase(&sheet);
    for (int column = sheet.LastCell().column; column >= 1; --column) sheet.DeleteColumn(column);
  };
  return Object(address.empty() ? "Cells" : "Range(" + address + ")",
                {{"Row", Give([row = first.row] { return row; })},
                 {"Column", Give([column = first.column] { return column; })},
                 {"Rows", count("Rows", last.row - first.row + 1)},
                 {"Columns", count("Columns", last.column - first.column + 1)},
                 {"SpecialCells", Give(last_cell)},
                 {"Value", value},
                 {"Value2", value},
                 {"NumberFormat", Do(format)},
                 {"Clear", Do(clear)}});
}

ComValue ScriptedApplication::ValueOf(const Worksheet& sheet, CellAddress place, bool exact) const {
  const CellValue cell = sheet.Value(place.row, place.column);
  if (exact && cell.kind == CellKind::kDate) return cell.number;
  if (exact || place.column != currency_column || cell.kind != CellKind::kNumber) {
    return ComValueOf(cell);
  }
  ComValue currency(cell.number);
  VARIANT* const raw = currency.Receive();
  VarCyFromR8(cell.number, &raw->cyVal);
  raw->vt = VT_CY;
  return currency;
}

void ScriptedApplication::Type(Worksheet& sheet, CellAddress place, const VARIANT& value) {
  std::string text;
  CellValue cell = CellFrom(value, text);
  if (text_cells_[&sheet].contains({place.row, place.column})) {
    if (cell.kind != CellKind::kText) text = CellText(cell);
    // Whether the apostrophe stays in such a cell is not to be relied on.
    if (text.starts_with('\'')) throw Error(error_number::kAutomation, "An apostrophe under @.");
    cell = CellValue::Text(text);
  } else if (cell.kind == CellKind::kText) {
    cell = Typed(text);
  }
  sheet.SetValue(place.row, place.column, cell);
}

}  // namespace korvex
