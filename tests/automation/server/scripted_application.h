// A spreadsheet application that is driven by automation: the object model of the real one, as far
// as this program uses it, over the embedded application, which holds the cells and reads and
// writes the files.
//
// A text that is put into a cell is taken as if it had been typed: a leading apostrophe goes, and
// without one, or the number format "@" (text), it becomes the number, date or formula that it
// looks like. A number in a cell of that format becomes a text.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

#include "spreadsheet/embedded_application.h"
#include "tests/automation/server/scripted_object.h"

namespace korvex {

class ScriptedApplication {
 public:
  explicit ScriptedApplication(FileSystem& files) : application_(files) {}

  // The object that a caller gets for the application.
  ScriptedObject* Root();

  ScriptedProgram program;
  std::string version = "16.0";
  bool is_protected = false;  // sheets refuse SpecialCells
  int currency_column = 0;    // its numbers have a currency format

 private:
  struct Area {
    CellAddress first;
    CellAddress last;
  };
  using Areas = std::vector<Area>;

  ComValue Object(const std::string& kind, ScriptedObject::Handler handler);
  ComValue OnApplication(const ScriptedCall& call);
  ComValue OnWorkbooks(const ScriptedCall& call);
  ComValue OnWorkbook(Workbook& workbook, const ScriptedCall& call);
  ComValue OnWorksheets(Workbook& workbook, const ScriptedCall& call);
  ComValue OnWorksheet(Worksheet& sheet, const ScriptedCall& call);
  ComValue OnRange(Worksheet& sheet, const Areas& areas, const ScriptedCall& call);
  ComValue OfWorkbook(Workbook& workbook);
  ComValue OfWorksheet(Worksheet& sheet);
  ComValue OfRange(Worksheet& sheet, const std::string& address);

  static Areas ParseAddress(const std::string& address);
  ComValue ValueOf(const Worksheet& sheet, int row, int column, bool exact) const;
  ComValue Grid(const Worksheet& sheet, const Area& area, bool exact) const;
  void PutGrid(Worksheet& sheet, const Area& area, const ComValue& value);
  void Type(Worksheet& sheet, int row, int column, const VARIANT& value);

  using Cell = std::pair<int, int>;
  EmbeddedApplication application_;
  std::map<const Worksheet*, std::set<Cell>> text_cells_;  // with the number format "@"
};

}  // namespace korvex
