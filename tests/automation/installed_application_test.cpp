// The installed spreadsheet application, played by a scripted one in this process: what is called,
// and with what result.

#include "automation/installed_application.h"

#include <gmock/gmock.h>

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

constexpr char kOutput[] = "C:\\plates\\out.xls";

class InstalledApplicationTest : public testing::Test {
 protected:
  InstalledApplicationTest() {
    files.AddFolder("C:\\plates");
    Start(Dispatch::kPatience);
  }
  ~InstalledApplicationTest() override {
    application.reset();
    EXPECT_EQ(scripted.program.objects, 0) << "references were kept";
  }

  void Start(Dispatch::Milliseconds patience) {
    application =
        std::make_unique<InstalledApplication>(Dispatch(scripted.Root(), patience), files);
    scripted.program.calls.clear();
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
                          "IgnoreReadOnlyRecommended:=True, ReadOnly:=True)",
                          "Workbook.Worksheets", "Worksheets.Item(Data)", "Worksheet.Name",
                          "Worksheet.Cells", "Cells.SpecialCells(11)", "Range(J384).Row",
                          "Range(J384).Column", "Worksheet.Range(A1:J384)", "Range(A1:J384).Value",
                          "Workbook.Close(SaveChanges:=False)"));
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
  EXPECT_EQ(OpenData({{"a"}, {"b", "c"}}).Value(2, 2).text, "c");
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
  EXPECT_THAT(scripted.program.calls,
              ElementsAre("Worksheet.Range(A1:A10000,B1)", "Range(A1:A10000,B1).NumberFormat = @",
                          "Worksheet.Range(A1:B10000)", "Range(A1:B10000).Value = [10000 x 2]",
                          "Application.Version",
                          "Workbook.SaveAs(FileFormat:=56, Filename:=C:\\plates\\out.xls)"));
  EXPECT_EQ(Saved(1, 2), T("A"));
  EXPECT_EQ(Saved(rows, 1), T("K10000"));
  EXPECT_EQ(Saved(rows, 2), CellValue::Number(rows / 8.0));
}

TEST_F(InstalledApplicationTest, KeepsTextsAsTheyAre) {
  const std::string long_text = "=" + std::string(5000, 'x');
  std::vector<CellValue> values = {CellValue::Number(17), CellValue::Date(37593.5),
                                   CellValue::Boolean(true), CellValue::ErrorCode(7), T("")};
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
      EXPECT_EQ(Saved(row, ++column), is_empty ? CellValue() : value) << row << ", " << column;
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
  scripted.program.calls.clear();
  EXPECT_EQ(ErrorOf([&] { output.SaveAsNew(kOutput); }).Number(), error_number::kFileExists);
  EXPECT_THAT(scripted.program.calls, testing::Not(testing::Contains(HasSubstr("SaveAs"))));
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
  scripted.program.busy_calls = 0;
}

TEST_F(InstalledApplicationTest, LeavesNothingOpen) {
  OpenData({{"a"}});
  application->AddWorkbook("out.xls");
  scripted.program.calls.clear();
  std::unique_ptr<Application> owner = std::move(application);
  QuitExcel(owner);
  EXPECT_THAT(scripted.program.calls,
              ElementsAre("Workbook.Close(SaveChanges:=False)",
                          "Workbook.Close(SaveChanges:=False)", "Application.Quit"));

  Start(Dispatch::kPatience);
  application->Quit();
  EXPECT_EQ(ErrorOf([&] { application->AddWorkbook("out.xls"); }).Number(),
            error_number::kAutomation);
}

}  // namespace
}  // namespace korvex
