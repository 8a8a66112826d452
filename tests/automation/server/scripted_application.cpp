#include "tests/automation/server/scripted_application.h"

#include <oleauto.h>

#include <algorithm>

#include "automation/cell_grid.h"
#include "platform/error.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

constexpr int kNameError = 29;

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

bool IsTrue(const ComValue& value) {
  return value.Type() == VT_BOOL && value.Raw().boolVal == VARIANT_TRUE;
}

[[noreturn]] void NoSuchMember() {
  throw ScriptedResult{DISP_E_MEMBERNOTFOUND};
}

}  // namespace

ScriptedObject* ScriptedApplication::Root() {
  return new ScriptedObject(program, "Application",
                            [this](const ScriptedCall& call) { return OnApplication(call); });
}

ComValue ScriptedApplication::Object(const std::string& kind, ScriptedObject::Handler handler) {
  return ComValue::Object(new ScriptedObject(program, kind, std::move(handler)));
}

ComValue ScriptedApplication::OnApplication(const ScriptedCall& call) {
  if (call.is_put) return {};
  if (call.member == "Version") return version;
  if (call.member == "Workbooks") {
    return Object("Workbooks", [this](const ScriptedCall& c) { return OnWorkbooks(c); });
  }
  if (call.member != "Quit") NoSuchMember();
  application_.Quit();
  return {};
}

ComValue ScriptedApplication::OnWorkbooks(const ScriptedCall& call) {
  // What it will be saved as, nobody says here; it has the room of the larger format.
  if (call.member == "Add") return OfWorkbook(application_.AddWorkbook("Book.xlsx"));
  if (call.member != "Open") NoSuchMember();
  return OfWorkbook(application_.OpenWorkbook(call.named.at("Filename").Text(), {}));
}

ComValue ScriptedApplication::OfWorkbook(Workbook& workbook) {
  return Object("Workbook",
                [this, &workbook](const ScriptedCall& call) { return OnWorkbook(workbook, call); });
}

ComValue ScriptedApplication::OnWorkbook(Workbook& workbook, const ScriptedCall& call) {
  if (call.member == "Worksheets") {
    return Object("Worksheets",
                  [this, &workbook](const ScriptedCall& c) { return OnWorksheets(workbook, c); });
  }
  if (call.member == "Name") return workbook.Name();
  if (call.member == "SaveAs") {
    const std::string name = call.named.at("Filename").Text();
    const bool is_xlsx = call.named.at("FileFormat").Integer() == 51;
    // The real one makes a file that it will not open again without complaint.
    if (is_xlsx != name.ends_with(".xlsx")) throw Error(error_number::kAutomation, "FileFormat");
    workbook.SaveAs(name);
  } else if (call.member == "Close" && !IsTrue(call.named.at("SaveChanges"))) {
    workbook.Close();
  } else {
    NoSuchMember();
  }
  return {};
}

ComValue ScriptedApplication::OnWorksheets(Workbook& workbook, const ScriptedCall& call) {
  if (call.member == "Count") return workbook.WorksheetCount();
  if (call.member != "Item") NoSuchMember();
  const ComValue& which = call.arguments.at(0);
  try {
    return OfWorksheet(which.Type() == VT_BSTR ? workbook.Worksheets(which.Text())
                                               : workbook.Worksheets(which.Integer()));
  } catch (const Error&) {
    throw ScriptedResult{DISP_E_BADINDEX};
  }
}

ComValue ScriptedApplication::OfWorksheet(Worksheet& sheet) {
  return Object("Worksheet",
                [this, &sheet](const ScriptedCall& call) { return OnWorksheet(sheet, call); });
}

ComValue ScriptedApplication::OnWorksheet(Worksheet& sheet, const ScriptedCall& call) {
  if (call.member == "Name") {
    if (call.is_put) sheet.SetName(call.arguments.back().Text());
    return sheet.Name();
  }
  if (call.member == "Index") return sheet.Index();
  if (call.member == "Range") return OfRange(sheet, call.arguments.at(0).Text());
  if (call.member == "Cells") return OfRange(sheet, "");
  if (call.member == "UsedRange") return OfRange(sheet, RangeAddress({1, 1}, sheet.LastCell()));
  if (call.member == "Activate") {
    sheet.Activate();
  } else if (call.member == "Delete") {
    sheet.Delete();
  } else {
    NoSuchMember();
  }
  return {};
}

ComValue ScriptedApplication::OfRange(Worksheet& sheet, const std::string& address) {
  const std::string kind = address.empty() ? "Cells" : "Range(" + address + ")";
  return Object(kind, [this, &sheet, areas = ParseAddress(address)](const ScriptedCall& call) {
    return OnRange(sheet, areas, call);
  });
}

ScriptedApplication::Areas ScriptedApplication::ParseAddress(const std::string& address) {
  if (address.empty()) return {{{1, 1}, {65536, 256}}};
  if (address.size() > 255) throw Error(error_number::kAutomation);
  Areas areas;
  for (const std::string& part : Split(address, ",")) {
    const std::vector<std::string> corners = Split(part, ":");
    areas.push_back({ParseCell(corners.front()), ParseCell(corners.back())});
  }
  return areas;
}

ComValue ScriptedApplication::OnRange(Worksheet& sheet, const Areas& areas,
                                      const ScriptedCall& call) {
  const auto [first, last] = areas.front();
  if (call.member == "Row") return first.row;
  if (call.member == "Column") return first.column;
  if (call.member == "Rows" || call.member == "Columns") {
    const int count = call.member == "Rows" ? last.row - first.row : last.column - first.column;
    return Object(call.member, [count](const ScriptedCall&) { return count + 1; });
  }
  if (call.member == "SpecialCells") {
    if (is_protected) throw Error(error_number::kAutomation, "The sheet is protected.");
    return OfRange(sheet, RangeAddress(sheet.LastCell(), sheet.LastCell()));
  }
  if (call.member == "Value" && call.is_put) {
    PutGrid(sheet, areas.front(), call.arguments.back());
  } else if (call.member == "Value" || call.member == "Value2") {
    return Grid(sheet, areas.front(), call.member == "Value2");
  } else if (call.member == "NumberFormat" && call.arguments.back().Text() == "@") {
    for (const auto& [start, end] : areas) {
      for (int row = start.row; row <= end.row; ++row) {
        for (int column = start.column; column <= end.column; ++column) {
          text_cells_[&sheet].insert({row, column});
        }
      }
    }
  } else if (call.member == "Clear") {
    const CellAddress end = sheet.LastCell();
    text_cells_.erase(&sheet);
    for (int column = end.column; column >= 1; --column) sheet.DeleteColumn(column);
  } else {
    NoSuchMember();
  }
  return {};
}

ComValue ScriptedApplication::ValueOf(const Worksheet& sheet, int row, int column,
                                      bool exact) const {
  const CellValue cell = sheet.Value(row, column);
  if (exact && cell.kind == CellKind::kDate) return cell.number;
  if (exact || column != currency_column || cell.kind != CellKind::kNumber) {
    return ComValueOf(cell);
  }
  ComValue currency(cell.number);
  VARIANT* const raw = currency.Receive();
  VarCyFromR8(cell.number, &raw->cyVal);
  raw->vt = VT_CY;
  return currency;
}

ComValue ScriptedApplication::Grid(const Worksheet& sheet, const Area& area, bool exact) const {
  const auto& [first, last] = area;
  if (first == last) return ValueOf(sheet, first.row, first.column, exact);
  SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(last.row - first.row + 1), 1},
                             {static_cast<ULONG>(last.column - first.column + 1), 1}};
  SAFEARRAY* const array = SafeArrayCreate(VT_VARIANT, 2, bounds);
  LONG at[2];
  for (at[0] = 1; at[0] <= static_cast<LONG>(bounds[0].cElements); ++at[0]) {
    for (at[1] = 1; at[1] <= static_cast<LONG>(bounds[1].cElements); ++at[1]) {
      ComValue value = ValueOf(sheet, static_cast<int>(first.row + at[0] - 1),
                               static_cast<int>(first.column + at[1] - 1), exact);
      VARIANT raw = value.Raw();
      SafeArrayPutElement(array, at, &raw);
    }
  }
  return ComValue::Array(array);
}

void ScriptedApplication::PutGrid(Worksheet& sheet, const Area& area, const ComValue& value) {
  const auto& [first, last] = area;
  LONG at[2];
  for (at[0] = 1; at[0] <= last.row - first.row + 1; ++at[0]) {
    for (at[1] = 1; at[1] <= last.column - first.column + 1; ++at[1]) {
      ComValue element;
      if ((value.Type() & VT_ARRAY) != 0) {
        SafeArrayGetElement(value.Raw().parray, at, element.Receive());
      } else {
        element = value;
      }
      Type(sheet, static_cast<int>(first.row + at[0] - 1),
           static_cast<int>(first.column + at[1] - 1), element.Raw());
    }
  }
}

void ScriptedApplication::Type(Worksheet& sheet, int row, int column, const VARIANT& value) {
  std::string text;
  CellValue cell = CellFrom(value, text);
  if (text_cells_[&sheet].contains({row, column})) {
    if (cell.kind != CellKind::kText) text = CellText(cell);
    // Whether the apostrophe stays in such a cell is not to be relied on.
    if (text.starts_with('\'')) throw Error(error_number::kAutomation, "An apostrophe under @.");
    cell = CellValue::Text(text);
  } else if (cell.kind == CellKind::kText) {
    text = std::string(cell.text);
    cell = Typed(text);
  }
  sheet.SetValue(row, column, cell);
}

}  // namespace korvex
