// The installed spreadsheet application, played by a scripted one in this process: what is called,
// and with what result.

#include "automation/installed_application.h"

#include <gmock/gmock.h>

#include <chrono>
#include <utility>

#include "automation/installed_spreadsheet.h"
#include "structure/basFuncs_workbooks.h"
#include "tests/automation/server/scripted_application.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/watched_spreadsheet.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

CellValue T(std::string_view text) {
  return CellValue::Text(text);
}

using Rows = std::vector<std::vector<TestCell>>;

constexpr char kScratch[] = "C:\\scratch";
constexpr char kOutput[] = "C:\\plates\\out.xls";

class InstalledApplicationTest : public testing::Test {
 protected:
  InstalledApplicationTest() {
    files.AddFolder("C:\\plates");
    files.AddFolder(kScratch);
    Start(Dispatch::kPatience);
  }
  ~InstalledApplicationTest() override {
    application.reset();
    EXPECT_EQ(scripted.program.objects, 0) << "references were kept";
  }

  void Start(Dispatch::Milliseconds patience) {
    application = std::make_unique<InstalledApplication>(Dispatch(scripted.Root(), patience), files,
                                                         kScratch);
    application->SetVisible(false);
    application->SetDisplayAlerts(false);
    scripted.program.calls.clear();
  }
  // Without the names of scratch files.
  std::vector<std::string> Calls() const {
    std::vector<std::string> calls;
    for (const std::string& call : scripted.program.calls) {
      const std::size_t name = call.find("korvex-");
      const std::size_t end = call.find('.', name);
      calls.push_back(name == std::string::npos ? call
                                                : call.substr(0, name) + "*" + call.substr(end));
    }
    return calls;
  }
  Worksheet& OpenData(const Rows& rows) {
    WatchedSpreadsheet(files).Put("C:\\plates\\P1-3-2.xls", {{"data", rows}});
    return application->OpenWorkbook("C:\\plates\\P1-3-2.xls", {.read_only = true})
        .Worksheets("data");
  }
  // A cell of the output as a reader of the file finds it.
  CellValue Saved(int row, int column) {
    if (!reader) {
      reader = std::make_unique<EmbeddedApplication>(files);
      reader->OpenWorkbook(kOutput, {});
    }
    return reader->Workbooks(1).Worksheets(1).Value(row, column);
  }

  MemoryFileSystem files{PathStyle::kWindows};
  ScriptedApplication scripted{files};
  std::unique_ptr<InstalledApplication> application;
  std::unique_ptr<EmbeddedApplication> reader;
};

TEST_F(InstalledApplicationTest, ReadsAPlateInOneTransfer) {
  Rows rows(384, std::vector<TestCell>(10));
  for (std::size_t i = 0; i < 3840; ++i) rows[i / 10][i % 10] = static_cast<int>(i);
  WatchedSpreadsheet(files).Put("C:\\plates\\P1-3-2.xls", {{"data", rows}});
  Workbook& workbook = application->OpenWorkbook(
      "C:\\plates\\P1-3-2.xls",
      {.read_only = true, .ignore_read_only_recommended = true, .add_to_recent_files = false});
  Worksheet& sheet = workbook.Worksheets("Data");
  EXPECT_EQ(GetLastRow(sheet), 384);
  for (int i = 0; i < 3840; ++i) {
    ASSERT_EQ(sheet.Value(i / 10 + 1, i % 10 + 1), CellValue::Number(i));
  }
  EXPECT_EQ(sheet.Value(385, 1), CellValue()) << "outside of what is used";
  workbook.Close();
  EXPECT_THAT(scripted.program.calls,
              ElementsAre("Application.Workbooks",
                          "Workbooks.Open(AddToMru:=False, Filename:=C:\\plates\\P1-3-2.xls, "
                          "IgnoreReadOnlyRecommended:=True, Password:=VelvetSweatshop, "
                          "ReadOnly:=True, UpdateLinks:=0, WriteResPassword:=VelvetSweatshop)",
                          "Application.Calculation", "Application.CalculationState",
                          "Workbook.Worksheets", "Worksheets.Item(Data)", "Worksheet.Name",
                          "Worksheet.UsedRange", "Range(A1:J384).Row", "Range(A1:J384).Column",
                          "Range(A1:J384).Rows", "Rows.Count", "Range(A1:J384).Columns",
                          "Columns.Count", "Worksheet.Cells", "Cells.SpecialCells(11)",
                          "Range(J384).Row", "Range(J384).Column", "Worksheet.Range(A1:J384)",
                          "Range(A1:J384).Value", "Workbook.Close(SaveChanges:=False)"));
}

TEST_F(InstalledApplicationTest, ReadsEveryKindOfValueAndSheet) {
  std::vector<TestCell> row = {"α-K1", {}, 0.123456789, CellValue::Date(37593.427083333336)};
  row.insert(row.end(), {CellValue::ErrorCode(42), CellValue::Boolean(true),
                         CellValue::Boolean(false), 1.23456789});
  scripted.currency_column = 8;
  Worksheet& sheet = OpenData({{}, row});  // what is used does not start in A1
  for (int column = 1; column <= 8; ++column) {
    EXPECT_EQ(sheet.Value(2, column), row[static_cast<std::size_t>(column) - 1].value) << column;
  }
  EXPECT_EQ(sheet.CountA(1), 0);
  EXPECT_EQ(sheet.CountA(2), 7);

  EXPECT_EQ(OpenData({{"12/03/2002 10:15"}}).Value(1, 1).text, "12/03/2002 10:15");
  scripted.is_protected = true;
  EXPECT_EQ(OpenData({{}, {"a"}, {"b", "c"}}).Value(3, 2).text, "c");
}

TEST_F(InstalledApplicationTest, ReadsWhatAFilterOrItsOwnerHides) {
  scripted.filtered_row = 1;
  scripted.is_hidden = true;
  Worksheet& sheet = OpenData({{}, {"a"}, {"b", "c"}});
  sheet.Activate();
  EXPECT_EQ(GetLastRow(sheet), 3);
  EXPECT_EQ(sheet.Value(3, 2).text, "c");
  EXPECT_THAT(scripted.program.calls, testing::Not(testing::Contains("Worksheet.Activate")));

  scripted.is_hidden = false;
  sheet.Activate();
  EXPECT_EQ(scripted.program.calls.back(), "Worksheet.Activate");
}

TEST_F(InstalledApplicationTest, ReadsDatesBesidesOneThatComHasNoneFor) {
  const CellValue good = CellValue::Date(37593.5);
  Worksheet& sheet = OpenData({{good, "a"}, {CellValue::Date(-1), good}, {good, good}});
  EXPECT_EQ(sheet.Value(2, 1), CellValue::Number(-1));
  for (const CellAddress cell : {CellAddress{1, 1}, {2, 2}, {3, 1}, {3, 2}}) {
    EXPECT_EQ(sheet.Value(cell.row, cell.column), good) << cell.row << ", " << cell.column;
  }
  EXPECT_EQ(sheet.Value(1, 2).text, "a");
}

TEST_F(InstalledApplicationTest, ReadsNoFormulaThatNobodyHasCalculated) {
  using Formulas = ScriptedApplication::Formulas;
  for (const Formulas formulas : {Formulas::kInAutomaticMode, Formulas::kOnDemand}) {
    scripted.formulas = formulas;
    EXPECT_EQ(OpenData({{5}}).Value(1, 1), CellValue::Number(5));
  }
  scripted.formulas = Formulas::kNever;
  const Error error = ErrorOf([&] { OpenData({{5}}); });
  EXPECT_THAT(error.Description(), HasSubstr("P1-3-2.xls cannot be opened: the spreadsheet "
                                             "application does not finish calculating"));
  EXPECT_EQ(application->WorkbookCount(), 2) << "it is closed again";
}

TEST_F(InstalledApplicationTest, RefusesWhatTheApplicationWouldNotOpen) {
  scripted.password = "secret";
  EXPECT_THAT(ErrorOf([&] { OpenData({{"a"}}); }).Description(),
              HasSubstr("P1-3-2.xls cannot be opened: The password is not correct."));
  scripted.program.calls.clear();

  const std::string long_name = "C:\\plates\\" + std::string(205, 'x') + ".xls";
  for (const auto& [name, why] :
       {std::pair<std::string, const char*>{long_name, "its path has 219 characters"},
        {"C:\\plates\\P1 [2].xls", "holds \"[\" or \"]\""}}) {
    EXPECT_THAT(ErrorOf([&, &file = name] {
                  InstalledSpreadsheet(files).CheckOutputName(file);
                }).Description(),
                HasSubstr(why));
    for (const bool is_expected : {true, false}) {
      const Error error = ErrorOf([&, &file = name] {
        is_expected ? application->Expect({"C:\\plates\\a.xls", file}, "data")
                    : static_cast<void>(application->OpenWorkbook(file, {}));
      });
      EXPECT_THAT(error.Description(), HasSubstr(why));
      EXPECT_THAT(error.Description(), HasSubstr("--spreadsheet embedded"));
    }
  }
  InstalledSpreadsheet(files).CheckOutputName("C:\\plates\\out [2].csv");
  application->Expect({"C:\\[1]\\" + std::string(206, 'x') + ".xls"}, "data");
}

TEST_F(InstalledApplicationTest, WritesTenThousandRowsInFewCalls) {
  Worksheet& sheet = application->AddWorkbook("out.xls").Worksheets(1);
  const int rows = 10'000;
  sheet.SetValue(1, 1, T("chem_id"));
  sheet.SetValue(1, 2, T("dropped"));
  sheet.SetValue(1, 3, T("A"));
  for (int row = 2; row <= rows; ++row) {
    sheet.SetValue(row, 1, T("K" + std::to_string(row)));
    sheet.SetValue(row, 3, CellValue::Number(row / 8.0));
  }
  sheet.DeleteColumn(2);
  EXPECT_EQ(sheet.CountA(1), 2);
  EXPECT_EQ(sheet.LastCell(), (CellAddress{rows, 2}));
  scripted.program.calls.clear();
  application->Workbooks(1).SaveAs(kOutput);
  EXPECT_THAT(Calls(),
              ElementsAre("Worksheet.Range(A1:A10000,B1)", "Range(A1:A10000,B1).NumberFormat = @",
                          "Worksheet.Range(A1:B10000)", "Range(A1:B10000).Value = [10000 x 2]",
                          "Application.Version",
                          "Workbook.SaveAs(FileFormat:=56, Filename:=C:\\scratch\\*.xls)"));
  EXPECT_EQ(Saved(1, 2), T("A"));
  EXPECT_EQ(Saved(rows, 1), T("K10000"));
  EXPECT_EQ(Saved(rows, 2), CellValue::Number(rows / 8.0));
}

TEST_F(InstalledApplicationTest, KeepsTextsAsTheyAre) {
  const std::string long_text = "=" + std::string(5000, 'x');
  // Two of the dates are none to COM.
  std::vector<CellValue> values = {CellValue::Number(17),
                                   CellValue::Date(37593.5),
                                   CellValue::Date(-0.5),
                                   CellValue::Date(2958466),
                                   CellValue::Boolean(true),
                                   CellValue::ErrorCode(7),
                                   T("")};
  for (const char* text : {"0017", "1E5", "1-2", "12/03/2002", "=A1", "'quoted", "TRUE", "é 𝛼",
                           " 5 ", long_text.c_str()}) {
    values.push_back(T(text));
  }
  Worksheet& sheet = application->AddWorkbook("out.xls").Worksheets(1);
  // So many runs of texts that their addresses do not fit into one.
  for (int row = 1; row <= 200; row += 2) {
    int column = 0;
    for (const CellValue& value : values) sheet.SetValue(row, ++column, value);
  }
  application->Workbooks(1).SaveAs(kOutput);
  for (int row : {1, 2, 199}) {
    int column = 0;
    for (const CellValue& value : values) {
      const bool is_empty = row == 2 || value == T("");
      const bool is_date = value.number >= 0 && value.number < 2958466;
      const CellValue kept = is_date ? value : CellValue::Number(value.number);
      EXPECT_EQ(Saved(row, ++column), is_empty ? CellValue() : kept) << row << ", " << column;
    }
  }
}

TEST_F(InstalledApplicationTest, WritesOverWhatItSavedBefore) {
  scripted.version = "11.0";
  Worksheet& sheet = application->AddWorkbook("out.xls").Worksheets(1);
  Workbook& workbook = application->Workbooks(1);
  sheet.SetValue(1, 1, T("0017"));
  sheet.SetValue(2, 2, T("gone"));
  workbook.SaveAs("C:\\plates\\first.xls");
  EXPECT_THAT(scripted.program.calls.back(), HasSubstr("FileFormat:=-4143")) << "by its version";
  sheet.SetValue(1, 1, CellValue::Number(17));
  sheet.DeleteColumn(2);
  workbook.SaveAs(kOutput);
  EXPECT_EQ(Saved(1, 1), CellValue::Number(17));
  EXPECT_EQ(Saved(2, 2), CellValue());
  EXPECT_THAT(ErrorOf([&] { application->AddWorkbook("a.xlsx"); }).Description(),
              HasSubstr("version 11.0, does not write .xlsx"));
  EXPECT_EQ(workbook.Name(), "out.xls");
  EXPECT_EQ(workbook.Path(), "C:\\plates");
}

TEST_F(InstalledApplicationTest, SavesInTheFormatOfTheName) {
  Workbook& workbook = application->AddWorkbook("out.csv");
  workbook.Worksheets(1).SetValue(1, 1, CellValue::Number(1 / 3.0));
  for (int i = 0; i < 2; ++i) workbook.Worksheets(2).Delete();
  workbook.SaveAs("C:\\plates\\out.csv");
  EXPECT_THAT(files.Content("C:\\plates\\out.csv"), HasSubstr("0.333333333333333"));
  workbook.SaveAs("C:\\plates\\out.tsv");
  EXPECT_TRUE(files.FileExists("C:\\plates\\out.tsv"));
  workbook.SaveAs("C:\\plates\\out.xlsx");
  EXPECT_THAT(scripted.program.calls.back(), HasSubstr("FileFormat:=51"));
  // The application would append an ending to this one.
  workbook.SaveAs("C:\\plates\\out");
  EXPECT_TRUE(files.FileExists("C:\\plates\\out"));
}

TEST_F(InstalledApplicationTest, PutsAnOutputInPlaceAsAWhole) {
  files.AddFile(kOutput, "former");
  scripted.program.failures["Workbook.SaveAs"] = 1;  // a virus scanner
  Workbook& workbook = application->AddWorkbook("out.xls");
  workbook.Worksheets(1).SetValue(1, 1, T("x"));
  scripted.program.failures["Workbook.SaveAs"] = 1'000;
  EXPECT_THAT(ErrorOf([&] { workbook.SaveAs(kOutput); }).Description(), HasSubstr(kOutput));
  EXPECT_EQ(files.Content(kOutput), "former");
  EXPECT_THAT(ErrorOf([&] { application->AddWorkbook("out.xls"); }).Description(),
              HasSubstr("cannot save .xls workbooks: Not now."));

  scripted.program.failures.clear();
  workbook.SaveAs(kOutput);
  EXPECT_EQ(Saved(1, 1), T("x"));
  application->Quit();
  EXPECT_TRUE(files.List(kScratch).empty());
}

TEST_F(InstalledApplicationTest, RefusesWhatAnOutputWorkbookMustNotBe) {
  OpenData({{"a"}});
  Workbook& output = application->AddWorkbook("out.xls");
  for (const char* name : {"C:\\plates\\p1-3-2.xls", "C:\\plates\\out.ods", "C:\\none\\out.xls"}) {
    const Error error = ErrorOf([&] { output.SaveAs(name); });
    EXPECT_EQ(error.Number(), error_number::kAutomation);
    EXPECT_THAT(error.Description(), HasSubstr(name));
  }
  EXPECT_EQ(ErrorOf([&] { output.Worksheets(1).SetValue(65537, 1, T("x")); }).Number(),
            error_number::kAutomation);
  output.SaveAsNew(kOutput);
  EXPECT_EQ(ErrorOf([&] { output.SaveAsNew(kOutput); }).Number(), error_number::kFileExists);
}

TEST_F(InstalledApplicationTest, PassesOnWhatTheApplicationSays) {
  Workbook& workbook = application->AddWorkbook("out.xls");
  const Error renamed = ErrorOf([&] { workbook.Worksheets(1).SetName("Sheet2"); });
  EXPECT_EQ(renamed.Number(), error_number::kAutomation);
  EXPECT_THAT(renamed.Description(), HasSubstr("another sheet of the workbook has this name"));
  EXPECT_EQ(renamed.Source(), "Scripted");

  const Error missing = ErrorOf([&] { workbook.Worksheets("data"); });
  EXPECT_EQ(missing.Number(), error_number::kSubscript);
  EXPECT_THAT(missing.Description(), HasSubstr("no worksheet \"data\""));

  const Error unopened = ErrorOf([&] { application->OpenWorkbook("C:\\plates\\no.xls", {}); });
  EXPECT_EQ(unopened.Number(), error_number::kAutomation);
  EXPECT_THAT(unopened.Description(), HasSubstr("C:\\plates\\no.xls cannot be opened"));
}

// The numbers 17 and 18 would say that the user knows already, or has asked to stop.
TEST_F(InstalledApplicationTest, MapsNumbersThatMeanSomethingElseHere) {
  for (const int number : {17, 18, 0}) {
    const auto fail = [number](const ScriptedCall&) -> ComValue { throw Error(number, "x"); };
    const Dispatch object(new ScriptedObject(scripted.program, "Object", {{"Any", fail}}));
    EXPECT_EQ(ErrorOf([&] { object.Call(L"Any"); }).Number(), error_number::kAutomation);
  }
}

TEST_F(InstalledApplicationTest, AsksABusyApplicationAgain) {
  scripted.program.busy_calls = 3;
  EXPECT_EQ(application->AddWorkbook("out.xls").WorksheetCount(), 3);

  Start(Dispatch::Milliseconds(0));
  scripted.program.busy_calls = 1'000;
  const Error error = ErrorOf([&] { application->AddWorkbook("out.xls"); });
  EXPECT_EQ(error.Number(), error_number::kAutomation);
  EXPECT_THAT(error.Description(), HasSubstr("busy"));

  // Not for as long when the run is to stop.
  CallWatch::TimePoint now = std::chrono::steady_clock::now();
  CallWatch watch([] { return true; }, [] {}, [&] { return now += CallWatch::kPatience; });
  const Dispatch watched(scripted.Root(), Dispatch::kPatience, &watch);
  scripted.program.busy_calls = 1'000;
  EXPECT_THAT(ErrorOf([&] { watched.Get(L"Version"); }).Description(), HasSubstr("busy"));
  EXPECT_EQ(scripted.program.busy_calls, 999);
  scripted.program.busy_calls = 0;
}

TEST_F(InstalledApplicationTest, SaysThatAnApplicationHasGone) {
  for (const HRESULT result : {RPC_E_DISCONNECTED, RPC_E_SERVER_DIED, RPC_E_CALL_CANCELED}) {
    scripted.program.disconnected = result;
    EXPECT_THAT(ErrorOf([&] { application->AddWorkbook("out.xls"); }).Description(),
                HasSubstr(result == RPC_E_CALL_CANCELED ? "did not answer" : "has ended"));
  }
  scripted.program.disconnected = S_OK;
}

TEST_F(InstalledApplicationTest, StartsOnlyWhereMacrosCanBeForbidden) {
  application.reset();
  scripted.program.failures["Application.AutomationSecurity"] = 1;
  EXPECT_EQ(ErrorOf([&] { Start(Dispatch::kPatience); }).Number(), error_number::kAutomation);
  scripted.version = "9.0";
  Start(Dispatch::kPatience);
}

TEST(CallWatch, GivesUpALongCallOnceAStopIsAsked) {
  CallWatch::TimePoint now;
  bool stop = false;
  int cancelled = 0;
  CallWatch watch([&] { return stop; }, [&] { ++cancelled; }, [&] { return now; });
  const auto look = [&](bool asked, std::chrono::seconds later) {
    stop = asked;
    now += later;
    watch.Look();
    return std::exchange(cancelled, 0);
  };
  using namespace std::chrono_literals;
  EXPECT_EQ(look(true, 60s), 0) << "no call";
  {
    const CallWatch::Call call(&watch);
    EXPECT_EQ(look(true, 4s), 0) << "it may end by itself";
    EXPECT_EQ(look(false, 60s), 0) << "nobody minds";
    EXPECT_EQ(look(true, 0s), 1);
    EXPECT_EQ(look(true, 0s), 1) << "as long as it does not end";
  }
  EXPECT_EQ(look(true, 60s), 0) << "it has ended";
  const CallWatch::Call next(&watch);
  EXPECT_EQ(look(true, 1s), 0);
}

TEST_F(InstalledApplicationTest, LeavesNothingOpen) {
  OpenData({{"a"}});
  application->AddWorkbook("out.xls");
  scripted.program.calls.clear();
  std::unique_ptr<Application> owner = std::move(application);
  QuitExcel(owner);
  EXPECT_THAT(scripted.program.calls, ElementsAre("Workbook.Close(SaveChanges:=False)",
                                                  "Workbook.Close(SaveChanges:=False)",
                                                  "Application.Visible", "Application.Quit"));

  Start(Dispatch::kPatience);
  application->Quit();
  EXPECT_EQ(ErrorOf([&] { application->AddWorkbook("out.xls"); }).Number(),
            error_number::kAutomation);
}

TEST_F(InstalledApplicationTest, LeavesAnApplicationToItsUser) {
  scripted.opens_foreign_workbook = true;
  application->AddWorkbook("out.xls");
  scripted.program.calls.clear();
  application->Quit();
  EXPECT_THAT(scripted.program.calls,
              ElementsAre("Application.Visible", "Workbook.Close(SaveChanges:=False)",
                          "Application.AutomationSecurity = 1", "Application.UserControl = True",
                          "Application.DisplayAlerts = True", "Application.ScreenUpdating = True",
                          "Application.EnableEvents = True"));
}

}  // namespace
}  // namespace korvex
