// The installed spreadsheet application as a scripted one in this process: what is called, and what
// comes of it.

#include "platform/windows/installed_application.h"

#include <gmock/gmock.h>

#include <numeric>

#include "engine/clsKorvex.h"
#include "tests/platform/windows/server/scripted_application.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "util/basFuncs.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

using Cells = std::vector<std::vector<CellValue>>;

CellValue T(std::string_view text) {
  return CellValue::Text(text);
}

// Writes workbooks by the embedded application.
void Save(FileSystem& files, const std::string& full_name, const Cells& cells) {
  EmbeddedApplication application(files);
  Workbook& workbook = application.AddWorkbook();
  workbook.Worksheets(1).SetName("data");
  for (std::size_t row = 0; row < cells.size(); ++row) {
    for (std::size_t column = 0; column < cells[row].size(); ++column) {
      workbook.Worksheets(1).SetValue(static_cast<int>(row) + 1, static_cast<int>(column) + 1,
                                      cells[row][column]);
    }
  }
  workbook.SaveAs(full_name);
}

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
  Worksheet& OpenData(const Cells& cells) {
    Save(files, "C:\\plates\\P1-3-2.xls", cells);
    return application->OpenWorkbook("C:\\plates\\P1-3-2.xls", {.read_only = true})
        .Worksheets("data");
  }
  // The cell as a reader of the file finds it.
  CellValue Saved(const std::string& full_name, int row, int column) {
    if (!reader) {
      reader = std::make_unique<EmbeddedApplication>(files);
      reader->OpenWorkbook(full_name, {});
    }
    return reader->Workbooks(1).Worksheets(1).Value(row, column);
  }

  MemoryFileSystem files{PathStyle::kWindows};
  ScriptedApplication scripted{files};
  std::unique_ptr<InstalledApplication> application;
  std::unique_ptr<EmbeddedApplication> reader;
};

TEST_F(InstalledApplicationTest, ReadsAPlateInOneTransfer) {
  Cells cells(384, std::vector<CellValue>(10));
  for (int row = 0; row < 384; ++row) {
    for (int column = 0; column < 10; ++column) {
      cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] =
          CellValue::Number(row * 100 + column);
    }
  }
  Save(files, "C:\\plates\\P1-3-2.xls", cells);
  Workbook& workbook = application->OpenWorkbook(
      "C:\\plates\\P1-3-2.xls",
      {.read_only = true, .ignore_read_only_recommended = true, .add_to_recent_files = false});
  Worksheet& sheet = workbook.Worksheets("Data");
  EXPECT_EQ(&sheet, &workbook.Worksheets(1)) << "one sheet whichever way it is asked for";
  scripted.program.calls.pop_back();
  scripted.program.calls.pop_back();
  scripted.program.calls.pop_back();
  EXPECT_EQ(GetLastRow(sheet), 384);
  for (int row = 1; row <= 384; ++row) {
    for (int column = 1; column <= 10; ++column) {
      ASSERT_EQ(sheet.Value(row, column), CellValue::Number((row - 1) * 100 + column - 1));
    }
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

TEST_F(InstalledApplicationTest, ReadsEveryKindOfValue) {
  const std::vector<CellValue> row = {CellValue::Date(37593.427083333336),
                                      CellValue::ErrorCode(42),
                                      CellValue::Boolean(true),
                                      CellValue::Boolean(false),
                                      CellValue::Number(0.123456789),
                                      CellValue(),
                                      T("\xCE\xB1-K1"),
                                      CellValue::Number(1.23456789)};
  scripted.currency_column = 8;
  Worksheet& sheet = OpenData({{}, row});  // what is used does not start in A1
  for (int column = 1; column <= 8; ++column) {
    EXPECT_EQ(sheet.Value(2, column), row[static_cast<std::size_t>(column) - 1]) << column;
  }
  EXPECT_EQ(sheet.CountA(1), 0);
  EXPECT_EQ(sheet.CountA(2), 7);
}

TEST_F(InstalledApplicationTest, ReadsASheetOfOneCell) {
  EXPECT_EQ(OpenData({{T("12/03/2002 10:15")}}).Value(1, 1).text, "12/03/2002 10:15");
}

TEST_F(InstalledApplicationTest, ReadsAProtectedSheet) {
  scripted.is_protected = true;
  Worksheet& sheet = OpenData({{T("a")}, {T("b"), T("c")}});
  EXPECT_EQ(sheet.LastCell(), (CellAddress{2, 2}));
  EXPECT_EQ(sheet.Value(2, 2).text, "c");
}

TEST_F(InstalledApplicationTest, WritesTenThousandRowsInFewCalls) {
  Worksheet& sheet = application->AddWorkbook().Worksheets(1);
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
  application->Workbooks(1).SaveAs("C:\\plates\\out.xls");
  EXPECT_THAT(scripted.program.calls,
              ElementsAre("Worksheet.Range(A1:A10000,B1)", "Range(A1:A10000,B1).NumberFormat = @",
                          "Worksheet.Range(A1:B10000)", "Range(A1:B10000).Value = [10000 x 2]",
                          "Application.Version",
                          "Workbook.SaveAs(FileFormat:=56, Filename:=C:\\plates\\out.xls)"));
  EXPECT_EQ(Saved("C:\\plates\\out.xls", 1, 2), T("A"));
  EXPECT_EQ(Saved("C:\\plates\\out.xls", rows, 1), T("K10000"));
  EXPECT_EQ(Saved("C:\\plates\\out.xls", rows, 2), CellValue::Number(rows / 8.0));
}

TEST_F(InstalledApplicationTest, KeepsTextsAsTheyAre) {
  const std::string long_text = "=" + std::string(5000, 'x');
  const std::vector<CellValue> values = {T("0017"),
                                         CellValue::Number(17),
                                         T("1E5"),
                                         T("1-2"),
                                         T("12/03/2002"),
                                         T("=A1"),
                                         T("'quoted"),
                                         CellValue::Date(37593.5),
                                         T("TRUE"),
                                         T(long_text),
                                         CellValue::Boolean(true),
                                         T(""),
                                         T("\xC3\xA9 \xF0\x9D\x9B\xBC"),
                                         T(" 5 "),
                                         CellValue::ErrorCode(7)};
  Worksheet& sheet = application->AddWorkbook().Worksheets(1);
  // So many runs of texts that their addresses do not fit into one.
  for (int row = 1; row <= 200; row += 2) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      sheet.SetValue(row, static_cast<int>(i) + 1, values[i]);
    }
  }
  application->Workbooks(1).SaveAs("C:\\plates\\out.xls");
  for (int row : {1, 2, 199}) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      const bool is_empty = row == 2 || values[i] == T("");
      EXPECT_EQ(Saved("C:\\plates\\out.xls", row, static_cast<int>(i) + 1),
                is_empty ? CellValue() : values[i])
          << row << ", " << i;
    }
  }
}

TEST_F(InstalledApplicationTest, WritesOverWhatItSavedBefore) {
  Worksheet& sheet = application->AddWorkbook().Worksheets(1);
  Workbook& workbook = application->Workbooks(1);
  sheet.SetValue(1, 1, T("0017"));
  sheet.SetValue(2, 2, T("gone"));
  workbook.SaveAs("C:\\plates\\first.xls");
  sheet.SetValue(1, 1, CellValue::Number(17));
  sheet.DeleteColumn(2);
  workbook.SaveAs("C:\\plates\\out.xls");
  EXPECT_EQ(Saved("C:\\plates\\out.xls", 1, 1), CellValue::Number(17));
  EXPECT_EQ(Saved("C:\\plates\\out.xls", 2, 2), CellValue());
  EXPECT_EQ(workbook.Name(), "out.xls");
  EXPECT_EQ(workbook.Path(), "C:\\plates");
}

TEST_F(InstalledApplicationTest, SavesTheOnlyFormatThatOldVersionsHave) {
  scripted.version = "11.0";
  application->AddWorkbook().SaveAs("C:\\plates\\out.xls");
  EXPECT_THAT(scripted.program.calls.back(), HasSubstr("FileFormat:=-4143"));
}

TEST_F(InstalledApplicationTest, RefusesWhatAnOutputWorkbookMustNotBe) {
  OpenData({{T("a")}});
  Workbook& output = application->AddWorkbook();
  for (const char* name : {"C:\\plates\\p1-3-2.xls", "C:\\plates\\out.xlsx", "C:\\none\\out.xls"}) {
    const Error error = ErrorOf([&] { output.SaveAs(name); });
    EXPECT_EQ(error.Number(), error_number::kAutomation);
    EXPECT_THAT(error.Description(), HasSubstr(name));
  }
  EXPECT_EQ(ErrorOf([&] { output.Worksheets(1).SetValue(65537, 1, T("x")); }).Number(),
            error_number::kAutomation);
}

TEST_F(InstalledApplicationTest, PassesOnWhatTheApplicationSays) {
  Workbook& workbook = application->AddWorkbook();
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
TEST_F(InstalledApplicationTest, TakesNoNumberForOneOfItsOwnMeanings) {
  for (const int number : {17, 18, 0}) {
    ScriptedProgram program;
    const Dispatch object(new ScriptedObject(
        program, "Object",
        [number](const ScriptedCall&) -> ComValue { throw Error(number, "x"); }));
    EXPECT_EQ(ErrorOf([&] { object.Call(L"Any"); }).Number(), error_number::kAutomation);
  }
}

TEST_F(InstalledApplicationTest, AsksABusyApplicationAgain) {
  scripted.program.busy_calls = 3;
  EXPECT_EQ(application->AddWorkbook().WorksheetCount(), 3);

  Start(Dispatch::Milliseconds(0));
  scripted.program.busy_calls = 1'000;
  const Error error = ErrorOf([&] { application->AddWorkbook(); });
  EXPECT_EQ(error.Number(), error_number::kAutomation);
  EXPECT_THAT(error.Description(), HasSubstr("busy"));
  scripted.program.busy_calls = 0;
}

TEST_F(InstalledApplicationTest, SaysThatTheApplicationHasEnded) {
  scripted.program.dies_at = "Range(A1:A2).Value";
  Worksheet& sheet = OpenData({{T("a")}, {T("b")}});
  for (int attempt = 0; attempt < 2; ++attempt) {
    const Error error = ErrorOf([&] { sheet.Value(1, 1); });
    EXPECT_EQ(error.Number(), error_number::kAutomation);
    EXPECT_THAT(error.Description(), HasSubstr("spreadsheet application has ended"));
  }
  std::unique_ptr<Application> dead = std::move(application);
  QuitExcel(dead);
  EXPECT_EQ(dead, nullptr);
}

TEST_F(InstalledApplicationTest, LeavesNothingOpen) {
  OpenData({{T("a")}});
  application->AddWorkbook();
  scripted.program.calls.clear();
  std::unique_ptr<Application> owner = std::move(application);
  QuitExcel(owner);
  EXPECT_THAT(scripted.program.calls,
              ElementsAre("Workbook.Close(SaveChanges:=False)",
                          "Workbook.Close(SaveChanges:=False)", "Application.Quit"));

  Start(Dispatch::kPatience);
  application->Quit();
  EXPECT_EQ(ErrorOf([&] { application->AddWorkbook(); }).Number(), error_number::kAutomation);
}

// Hands out the one scripted application, or an embedded one.
struct EitherSpreadsheet : SpreadsheetProgram {
  std::unique_ptr<Application> CreateApplication() override {
    if (!by_automation) return std::make_unique<EmbeddedApplication>(files);
    scripted.push_back(std::make_unique<ScriptedApplication>(files));
    return std::make_unique<InstalledApplication>(Dispatch(scripted.back()->Root()), files);
  }
  void CheckOutputName(const std::string&) const override {}

  explicit EitherSpreadsheet(FileSystem& file_system) : files(file_system) {}
  FileSystem& files;
  bool by_automation = false;
  std::vector<std::unique_ptr<ScriptedApplication>> scripted;
};

struct NoEvents : KorvexEvents {
  void ErrorMessage(const std::string&) override {}
  void Message(const std::string&) override {}
  void ProcessedFile() override {}
};

TEST(InstalledSpreadsheetRun, GivesTheCellsOfTheEmbeddedApplication) {
  TestPlatform platform(PathStyle::kWindows);
  EitherSpreadsheet spreadsheet(platform.files);
  platform.SetSpreadsheet(&spreadsheet);
  platform.files.AddFolder("C:\\screen\\set 1");
  platform.files.AddFolder("C:\\out");
  const std::vector<CellValue> headers = {T("#"), T("compound ID"), T("Plate"), T("Seen"),
                                          T("Delta OD")};
  const auto row = [](int number, std::string_view id, CellValue data) {
    return std::vector<CellValue>{CellValue::Number(number), T(id), CellValue::Number(1041),
                                  CellValue::Date(37593.25 + number), data};
  };
  Save(platform.files, "C:\\screen\\set 1\\P1-3-1.xls",
       {{T("12/03/2002 10:15")},
        headers,
        row(1, "0017", CellValue::Number(1 / 3.0)),
        row(2, "=K2", CellValue::ErrorCode(42)),
        row(3, "1-2", T("n/a")),
        row(4, "'K4", CellValue::Boolean(true))});
  Save(platform.files, "C:\\screen\\set 1\\P1-3-3.xls",
       {{T("12/04/2002 09:00")},
        headers,
        row(1, "0017", CellValue::Number(-2)),
        row(2, "\xCE\xB1", CellValue::Date(37593.5))});
  const auto set = [&](const char* key, const char* value) {
    platform.settings.Save("File Structure", key, value);
  };
  set("Keys Columns", "compound ID");
  set("Output Columns", "compound ID<-- -->Plate<-- -->Seen<-- -->Date<-- -->day_num");
  platform.settings.Save("Main Section", "Output Path", "C:\\out\\");
  platform.settings.Save("Main Section", "Send Email on Error", "0");

  std::string folder = "C:\\screen";
  NoEvents events;
  for (const bool by_automation : {false, true}) {
    spreadsheet.by_automation = by_automation;
    platform.settings.Save("Main Section", "Output File", by_automation ? "b.xls" : "a.xls");
    clsKorvex engine(events);
    engine.ProcessFolders(folder, {});
  }
  EXPECT_THAT(platform.dialogs.texts, testing::IsEmpty());
  // Equal cells make equal files.
  EXPECT_EQ(platform.files.Content("C:\\out\\a.xls"), platform.files.Content("C:\\out\\b.xls"));
  for (const auto& scripted : spreadsheet.scripted) {
    EXPECT_EQ(scripted->program.objects, 0);
    EXPECT_EQ(scripted->program.calls.back(), "Application.Quit");
  }
  // The sample's application and the run's.
  EXPECT_EQ(spreadsheet.scripted.size(), 2u);
}

}  // namespace
}  // namespace korvex
