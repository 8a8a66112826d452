// A spreadsheet application that is driven by automation: the object model of the real one, as far
// as this program uses it, over the embedded application, which holds the cells and reads and
// writes the files. Every call is recorded.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "automation/com_value.h"
#include "platform/error.h"
#include "spreadsheet/embedded_application.h"

namespace korvex {

// One call as it arrived. `arguments` are those without a name, from the first to the last; the
// value of a property that is put is the last of them.
struct ScriptedCall {
  std::string member;
  bool is_put = false;
  std::vector<ComValue> arguments;
  std::map<std::string, ComValue> named;

  // "Open(Filename:=C:\a.xls, ReadOnly:=True)", "Visible = False", "Value = [384 x 10]"
  std::string Text() const;
};

// What all objects of one scripted program share.
struct ScriptedProgram {
  std::vector<std::string> calls;               // "Range(A1).Value", in order
  std::function<void(const std::string&)> log;  // for each of them, when there is one
  int busy_calls = 0;                           // so many calls more are rejected
  std::map<std::string, int> failures;          // "Workbook.SaveAs": so many of these calls fail
  HRESULT disconnected = S_OK;                  // what every call answers with, unless it is S_OK
  std::string dies_at;                          // a call, as recorded, that never returns
  std::function<void()> die;                    // how
  int objects = 0;                              // alive
  std::function<void()> on_last_release;        // when the last of them goes
  // A question in a window that nobody sees; the real program waits for an answer for ever.
  std::function<void(const std::string&)> ask = [](const std::string& question) {
    throw Error(error_number::kInternal, "It asks: " + question);
  };
  std::vector<std::wstring> names;  // of members and arguments; their places are ids
};

// An object for late-bound callers, which has these members alone; of each method it knows the
// names of the arguments that the real one has. A member that throws an Error answers with the
// exception of a program that counts errors the same way, with the source "Scripted"; error 9 is a
// bad index.
class ScriptedObject : public IDispatch {
 public:
  using Members = std::map<std::string, std::function<ComValue(const ScriptedCall&)>>;

  // Holds one reference, which a Dispatch or a ComValue takes over. `program` must outlive it.
  ScriptedObject(ScriptedProgram& program, std::string kind, Members members);
  virtual ~ScriptedObject();

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID locale, WORD flags,
                                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                   UINT*) override;

 private:
  ScriptedCall CallFrom(DISPID member, WORD flags, const DISPPARAMS& parameters) const;

  ScriptedProgram& program_;
  std::string kind_;
  Members members_;
  ULONG references_ = 1;
};

// Both corners belong to it.
struct CellArea {
  CellAddress first, last;
};

// As harsh as the real one: whatever can make that ask in a window does so here, above all every
// workbook that is opened; what it refuses is refused (long paths, brackets in names, a sheet named
// "History", long texts and strange dates in a block).
//
// A text that is put into a cell is taken as if it had been typed: a leading apostrophe goes, and
// without one, or the number format "@" (text), it becomes the number, date or formula that it
// looks like. A number in a cell of that format becomes a text.
class ScriptedApplication {
 public:
  explicit ScriptedApplication(FileSystem& files) : application_(files) {}

  // The object that a caller gets for the application.
  ScriptedObject* Root();

  ScriptedProgram program;
  std::string version = "16.0";
  bool is_protected = false;                // sheets refuse SpecialCells
  int currency_column = 0;                  // its numbers have a currency format
  int filtered_row = 0;                     // where SpecialCells ends instead of at the last row
  bool is_hidden = false;                   // sheets
  std::string password = kDefaultPassword;  // of the workbooks that are opened
  int window = 0;                           // its handle
  bool is_visible = false;
  bool opens_foreign_workbook = false;  // and shows itself, when a workbook is added

  // When the formulas of a workbook that is opened are calculated; before, they read as 0.
  enum class Formulas { kAtOnce, kInAutomaticMode, kOnDemand, kNever };
  Formulas formulas = Formulas::kAtOnce;

 private:
  static constexpr int kAutomatic = -4105;
  static constexpr int kManual = -4135;
  static constexpr int kNoMacros = 3;

  ComValue Open(const ScriptedCall& call);
  void Save(Workbook& workbook, bool checks_compatibility, const ScriptedCall& call);
  void PutBlock(Worksheet& sheet, const CellArea& area, const VARIANT& given);
  ComValue Object(const std::string& kind, ScriptedObject::Members members);
  ComValue OfWorkbook(Workbook& workbook);
  ComValue OfWorksheets(Workbook& workbook);
  ComValue OfWorksheet(Worksheet& sheet);
  ComValue OfRange(Worksheet& sheet, const std::string& address);

  ComValue ValueOf(const Worksheet& sheet, CellAddress cell, bool exact) const;
  void Type(Worksheet& sheet, CellAddress cell, const VARIANT& value);

  int calculation_ = kAutomatic;
  bool is_calculated_ = true;
  bool has_events_ = true;
  bool has_alerts_ = true;
  int macro_security_ = 1;
  EmbeddedApplication application_;
  std::map<const Worksheet*, std::set<std::pair<int, int>>> text_cells_;  // of the format "@"
};

}  // namespace korvex
