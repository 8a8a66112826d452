#include "tests/automation/server/scripted_application.h"

#include <oleauto.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "automation/cell_grid.h"
#include "platform/error.h"
#include "platform/windows/wide_text.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

constexpr int kNameError = 29;
constexpr std::size_t kLongestPath = 218;
constexpr std::size_t kLongestInBlock = 911;

// The names of the arguments of the real methods.
const std::map<std::string, std::set<std::string>> kArgumentNames = {
    {"Open",
     {"Filename", "UpdateLinks", "ReadOnly", "Format", "Password", "WriteResPassword",
      "IgnoreReadOnlyRecommended", "Origin", "Delimiter", "Editable", "Notify", "Converter",
      "AddToMru", "Local", "CorruptLoad"}},
    {"SaveAs",
     {"Filename", "FileFormat", "Password", "WriteResPassword", "ReadOnlyRecommended",
      "CreateBackup", "AccessMode", "ConflictResolution", "AddToMru", "Local"}},
    {"Close", {"SaveChanges", "Filename", "RouteWorkbook"}}};

void Deny(const std::string& why) {
  throw Error(error_number::kAutomation, why);
}

void CheckFileName(const std::string& full_name) {
  const std::string name = full_name.substr(full_name.rfind('\\') + 1);
  if (full_name.size() > kLongestPath) Deny("The path is too long.");
  if (name.find_first_of("[]") != std::string::npos) Deny("The name holds a bracket.");
}

bool IsDate(double serial) {
  return serial >= 0 && serial < 2'958'466;
}

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

std::vector<CellArea> ParseAddress(const std::string& address) {
  if (address.empty()) return {{{1, 1}, {65536, 256}}};
  if (address.size() > 255) Deny("The address is too long.");
  std::vector<CellArea> areas;
  for (const std::string& part : Split(address, ",")) {
    const std::vector<std::string> corners = Split(part, ":");
    areas.push_back({ParseCell(corners.front()), ParseCell(corners.back())});
  }
  return areas;
}

// Calls `take` with the place of every cell of an area: in a grid, whose two indices count from 1,
// and in the sheet.
template <class Take>
void ForEachCell(const CellArea& area, Take take) {
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

// A property that is put and got.
template <class Value>
auto Keep(Value& value) {
  return [&value](const ScriptedCall& call) {
    if (call.is_put) value = static_cast<Value>(call.arguments.back().Integer());
    return ComValue(value);
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
  const std::string member = FromWide(names[0]);
  if (!members_.contains(member)) return DISP_E_UNKNOWNNAME;
  const auto arguments = kArgumentNames.find(member);
  for (UINT i = 0; i < count; ++i) {
    const bool is_known = i == 0 || (arguments != kArgumentNames.end() &&
                                     arguments->second.contains(FromWide(names[i])));
    if (!is_known) return DISP_E_UNKNOWNNAME;
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
  if (program_.disconnected != S_OK) return program_.disconnected;
  const auto member = members_.find(call.member);
  if (member == members_.end()) return DISP_E_MEMBERNOTFOUND;
  try {
    const auto failure = program_.failures.find(kind_ + "." + call.member);
    if (failure != program_.failures.end() && failure->second-- > 0) Deny("Not now.");
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
  const auto add = [this] {
    if (std::exchange(opens_foreign_workbook, false)) {
      is_visible = true;
      application_.AddWorkbook("Foreign.xlsx");
    }
    // The format is not known yet, so it has the room of the larger one.
    return OfWorkbook(application_.AddWorkbook("Book.xlsx"));
  };
  const ScriptedObject::Members workbooks = {
      {"Add", Give(add)}, {"Open", [this](const ScriptedCall& call) { return Open(call); }}};
  const auto ignore = Do([](const ScriptedCall&) {});
  const auto calculation = [this](const ScriptedCall& call) {
    if (call.is_put && formulas == Formulas::kInAutomaticMode) is_calculated_ = true;
    return Keep(calculation_)(call);
  };
  const auto calculate = [this](const ScriptedCall&) {
    if (formulas == Formulas::kOnDemand) is_calculated_ = true;
  };
  ScriptedObject::Members members = {
      {"Calculate", Do(calculate)},
      {"Calculation", calculation},
      {"CalculationState", Give([this] { return is_calculated_ ? 0 : 2; })},
      {"DisplayAlerts", Keep(has_alerts_)},
      {"EnableEvents", Keep(has_events_)},
      {"Hwnd", Give([this] { return window; })},
      {"ScreenUpdating", ignore},
      {"UserControl", ignore},
      {"Visible", Keep(is_visible)},
      {"Version", Give([this] { return version; })},
      {"Workbooks", Give([=, this] { return Object("Workbooks", workbooks); })},
      {"Quit", Do([this](const ScriptedCall&) { application_.Quit(); })}};
  if (version != "9.0") members["AutomationSecurity"] = Keep(macro_security_);
  return new ScriptedObject(program, "Application", std::move(members));
}

// Every workbook has links, is recommended for reading only, is in use, and has macros for events.
ComValue ScriptedApplication::Open(const ScriptedCall& call) {
  const auto is = [&](const char* argument, const std::string& value) {
    const auto given = call.named.find(argument);
    return given != call.named.end() && Shown(given->second) == value;
  };
  if (!is("UpdateLinks", "0")) program.ask("Update the links?");
  if (!is("ReadOnly", "True")) program.ask("It is in use. Open it for reading?");
  if (!is("IgnoreReadOnlyRecommended", "True")) program.ask("Open it for reading?");
  if (!call.named.contains("Password")) program.ask("What is the password?");
  if (!call.named.contains("WriteResPassword")) program.ask("What is the password for writing?");
  if (has_events_) program.ask("The workbook asks when it is opened.");
  if (macro_security_ != kNoMacros && version != "9.0") program.ask("Enable the macros?");
  const std::string name = call.named.at("Filename").Text();
  CheckFileName(name);
  if (!is("Password", password)) Deny("The password is not correct.");
  const ComValue workbook = OfWorkbook(application_.OpenWorkbook(name, {}));
  if (formulas != Formulas::kAtOnce) {
    calculation_ = formulas == Formulas::kInAutomaticMode ? kManual : kAutomatic;
    is_calculated_ = false;
  }
  return workbook;
}

void ScriptedApplication::Save(Workbook& workbook, bool checks_compatibility,
                               const ScriptedCall& call) {
  std::string name = call.named.at("Filename").Text();
  CheckFileName(name);
  const std::string title = name.substr(name.rfind('\\') + 1);
  if (title.find('.') == std::string::npos) name += ".xls";
  const bool is_xlsx = call.named.at("FileFormat").Integer() == 51;
  // The real one makes a file that it will not open again without complaint.
  if (is_xlsx != name.ends_with(".xlsx")) Deny("FileFormat");
  if (has_alerts_) program.ask("Replace the file?");
  if (checks_compatibility && !is_xlsx) program.ask("Some features are lost in .xls. Go on?");
  workbook.SaveAs(name);
}

ComValue ScriptedApplication::OfWorkbook(Workbook& workbook) {
  const bool has_checker = std::atoi(version.c_str()) >= 12;
  const auto checks = std::make_shared<bool>(has_checker);
  const auto close = [this, &workbook](const ScriptedCall& call) {
    const auto save = call.named.find("SaveChanges");
    if (save == call.named.end() || Shown(save->second) != "False") program.ask("Save it?");
    workbook.Close();
  };
  const auto save = [=, &workbook, this](const ScriptedCall& call) {
    Save(workbook, *checks, call);
  };
  ScriptedObject::Members members = {
      {"Name", Give([&workbook] { return workbook.Name(); })},
      {"Worksheets", Give([&, this] { return OfWorksheets(workbook); })},
      {"SaveAs", Do(save)},
      {"Close", Do(close)}};
  if (has_checker) {
    members["CheckCompatibility"] = [checks](const ScriptedCall& call) {
      return Keep(*checks)(call);
    };
  }
  return Object("Workbook", std::move(members));
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
    if (call.is_put) {
      const std::string given = call.arguments.back().Text();
      if (EqualText(given, "History")) Deny("The name is reserved.");
      sheet.SetName(given);
    }
    return ComValue(sheet.Name());
  };
  const auto range = [this, &sheet](const ScriptedCall& call) {
    return OfRange(sheet, call.arguments.at(0).Text());
  };
  const auto used = [this, &sheet] {
    const CellAddress last = sheet.LastCell();
    CellAddress first{1, 1};
    while (first.row < last.row && sheet.CountA(first.row) == 0) ++first.row;
    return OfRange(sheet, RangeAddress(first, last));
  };
  const auto activate = [this, &sheet](const ScriptedCall&) {
    if (is_hidden) Deny("The sheet is hidden.");
    sheet.Activate();
  };
  const auto remove = [this, &sheet](const ScriptedCall&) {
    if (has_alerts_) program.ask("Delete the sheet?");
    sheet.Delete();
  };
  return Object("Worksheet", {{"Name", name},
                              {"Index", Give([&sheet] { return sheet.Index(); })},
                              {"Range", range},
                              {"Cells", Give([this, &sheet] { return OfRange(sheet, ""); })},
                              {"UsedRange", Give(used)},
                              {"Activate", Do(activate)},
                              {"Visible", Give([this] { return is_hidden ? 0 : -1; })},
                              {"Delete", Do(remove)}});
}

ComValue ScriptedApplication::OfRange(Worksheet& sheet, const std::string& address) {
  const std::vector<CellArea> areas = ParseAddress(address);
  const auto [first, last] = areas.front();
  const auto count = [this](const char* kind, int number) {
    return Give([=, this] { return Object(kind, {{"Count", Give([number] { return number; })}}); });
  };
  const auto last_cell = [this, &sheet] {
    if (is_protected) throw Error(error_number::kAutomation, "The sheet is protected.");
    CellAddress end = sheet.LastCell();
    if (filtered_row > 0) end.row = filtered_row;
    return OfRange(sheet, RangeAddress(end, end));
  };
  const auto value = [this, &sheet, area = areas.front()](const ScriptedCall& call) {
    if (call.is_put) {
      PutBlock(sheet, area, call.arguments.back().Raw());
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
    for (const CellArea& area : areas) {
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
  if (!is_calculated_ && cell.kind == CellKind::kNumber) return 0.0;
  if (exact && cell.kind == CellKind::kDate) return cell.number;
  if (cell.kind == CellKind::kDate && !IsDate(cell.number)) Deny("There is no such date.");
  if (exact || place.column != currency_column || cell.kind != CellKind::kNumber) {
    return ComValueOf(cell);
  }
  ComValue currency(cell.number);
  VARIANT* const raw = currency.Receive();
  VarCyFromR8(cell.number, &raw->cyVal);
  raw->vt = VT_CY;
  return currency;
}

void ScriptedApplication::PutBlock(Worksheet& sheet, const CellArea& area, const VARIANT& given) {
  ForEachCell(area, [&](LONG* at, CellAddress cell) {
    if ((given.vt & VT_ARRAY) == 0) {
      Type(sheet, cell, given);
      return;
    }
    ComValue element;
    SafeArrayGetElement(given.parray, at, element.Receive());
    if (element.Type() == VT_BSTR && element.Text().size() > kLongestInBlock) {
      Deny("The text is too long for a block.");
    }
    Type(sheet, cell, element.Raw());
  });
}

void ScriptedApplication::Type(Worksheet& sheet, CellAddress place, const VARIANT& value) {
  std::string text;
  CellValue cell = CellFrom(value, text);
  if (cell.kind == CellKind::kDate && !IsDate(cell.number)) Deny("There is no such date.");
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
