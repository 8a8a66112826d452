#include "spreadsheet/output_workbook.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>

#include "spreadsheet/embedded_application.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

using ::testing::HasSubstr;

constexpr char kFile[] = "/plates/out.xls";

class OutputWorkbookTest : public ::testing::Test {
 protected:
  OutputWorkbookTest() { files_.AddFolder("/plates"); }

  // A workbook of one sheet.
  Workbook& NewWorkbook() {
    Workbook& workbook = application_.AddWorkbook("out.xls");
    while (workbook.WorksheetCount() > 1) workbook.Worksheets(1).Delete();
    return workbook;
  }

  Workbook& SaveAndOpen(Workbook& workbook) {
    workbook.SaveAs(kFile);
    return application_.OpenWorkbook(kFile, {});
  }

  MemoryFileSystem files_{PathStyle::kLinux};
  EmbeddedApplication application_{files_};
  Workbook& workbook_ = NewWorkbook();
  Worksheet& sheet_ = workbook_.Worksheets(1);
};

TEST_F(OutputWorkbookTest, KeepsEveryValueThroughAFile) {
  std::vector<CellValue> values;
  for (const double number :
       {-1.0, 5368709.11, 536870911.0, 536870912.0, -536870913.0,
        0.29,                       // no 29 when multiplied by 100
        std::nextafter(0.35, 1.0),  // but this is 35
        1.0 / 3, std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()}) {
    values.push_back(CellValue::Number(number));
  }
  for (const double date : {0.75, 37000.0, 37000.123456789}) {
    values.push_back(CellValue::Date(date));
  }
  for (const char* text : {"0017", "=A1", "éЖ日 \U0001D11E"}) {
    values.push_back(CellValue::Text(text));
  }
  values.push_back(CellValue::Boolean(true));
  values.push_back(CellValue::ErrorCode(42));
  const int columns[] = {1, 2, 4, 256};
  int row = 0;
  for (const CellValue& value : values) {
    ++row;
    for (const int column : columns) sheet_.SetValue(row, column, value);
  }
  Worksheet& read = SaveAndOpen(workbook_).Worksheets(1);
  EXPECT_EQ(read.LastCell(), (CellAddress{row, 256}));
  row = 0;
  for (const CellValue& value : values) {
    ++row;
    for (const int column : columns) EXPECT_EQ(read.Value(row, column), value) << row << column;
    EXPECT_EQ(sheet_.Value(row, 4), value) << row;
    EXPECT_EQ(read.CountA(row), 4);
  }
}

TEST_F(OutputWorkbookTest, FillsASheetToItsLastRow) {
  for (int row = 1; row <= 65536; ++row) {
    sheet_.SetValue(row, 1, CellValue::Text("key " + std::to_string(row)));
    if (row % 5000 != 0) sheet_.SetValue(row, 2, CellValue::Number(row / 7.0));
  }
  Worksheet& read = SaveAndOpen(workbook_).Worksheets(1);
  EXPECT_EQ(read.LastCell(), (CellAddress{65536, 2}));
  for (int row = 1; row <= 65536; ++row) {
    ASSERT_EQ(read.Value(row, 1), sheet_.Value(row, 1));
    ASSERT_EQ(read.Value(row, 2), sheet_.Value(row, 2));
  }
}

TEST_F(OutputWorkbookTest, RefusesWhatTheFormatCannotHold) {
  const CellValue one = CellValue::Number(1);
  const std::string longest(32767, 'x');
  const struct {
    std::function<void()> call;
    const char* cause;
  } cases[] = {
      {[&] { sheet_.SetValue(65537, 1, one); }, "65,536 rows"},
      {[&] { sheet_.SetValue(1, 257, one); }, "256 columns"},
      {[&] { sheet_.SetValue(1, 0, one); }, "count from 1"},
      {[&] { sheet_.SetValue(9, 28, CellValue::Text(longest + "x")); }, "Cell AB9 "},
      {[&] { sheet_.SetValue(9, 256, CellValue::Number(1 / 0.0)); }, "Cell IV9 "},
      {[&] { sheet_.SetValue(1, 1, CellValue::Date(std::nan(""))); }, "undefined"},
      {[&] { sheet_.SetValue(1, 1, CellValue::ErrorCode(256)); }, "error code"},
      {[&] { sheet_.SetName(""); }, "empty"},
      {[&] { sheet_.SetName(std::string(32, 'n')); }, "31"},
      {[&] { sheet_.SetName("a/b"); }, R"(\ / ? * [ ] :)"},
      {[&] { sheet_.Delete(); }, "one sheet at least"},
  };
  for (const auto& test : cases) {
    const Error error = ErrorOf(test.call);
    EXPECT_EQ(error.Number(), error_number::kAutomation) << test.cause;
    EXPECT_THAT(error.Description(), HasSubstr(test.cause));
  }
  EXPECT_EQ(sheet_.LastCell(), (CellAddress{1, 1}));
  // 32,767 characters are as many UTF-16 units, not bytes.
  std::string accents;
  for (int i = 0; i < 32767; ++i) accents += "\u0416";
  sheet_.SetValue(1, 1, CellValue::Text(accents));
  EXPECT_EQ(sheet_.Value(1, 1).text, accents);
}

TEST_F(OutputWorkbookTest, MovesTheColumnsBehindADeletedOne) {
  sheet_.SetValue(1, 1, CellValue::Text("key"));
  sheet_.SetValue(1, 2, CellValue::Text("A"));
  sheet_.SetValue(600, 4, CellValue::Text("C"));
  sheet_.DeleteColumn(3);
  sheet_.DeleteColumn(1);
  sheet_.DeleteColumn(387);
  EXPECT_EQ(sheet_.Value(1, 1), CellValue::Text("A"));
  EXPECT_EQ(sheet_.Value(600, 2), CellValue::Text("C"));
  EXPECT_EQ(sheet_.LastCell(), (CellAddress{600, 2}));
  EXPECT_EQ(sheet_.CountA(600), 1);
  EXPECT_EQ(sheet_.Value(1, 387), CellValue{}) << "beyond the limits";
  EXPECT_EQ(sheet_.Value(70000, 1), CellValue{});
}

TEST_F(OutputWorkbookTest, StartsWithThreeSheetsOfTheirOwnNames) {
  Workbook& workbook = application_.AddWorkbook("out.xls");
  EXPECT_EQ(workbook.WorksheetCount(), 3);
  Worksheet& third = workbook.Worksheets("SHEET3");
  EXPECT_EQ(third.Index(), 3);
  EXPECT_THAT(ErrorOf([&] { third.SetName("sheet1"); }).Description(), HasSubstr("another sheet"));
  third.SetName("SHEET3");
  third.Activate();
  third.Delete();
  EXPECT_EQ(ErrorOf([&] { workbook.Worksheets(3); }).Number(), error_number::kSubscript);
  EXPECT_EQ(ErrorOf([&] { workbook.Worksheets("Sheet3"); }).Number(), error_number::kSubscript);
  workbook.Worksheets(2).SetValue(1, 1, CellValue::Text("second"));
  workbook.Worksheets(2).SetName("R\u00FCn \u65E5\u672C");
  EXPECT_EQ(SaveAndOpen(workbook).Worksheets("R\u00FCn \u65E5\u672C").Value(1, 1).text, "second");
}

TEST_F(OutputWorkbookTest, SavesEqualContentAsEqualBytes) {
  sheet_.SetValue(1, 1, CellValue::Text("key"));
  sheet_.SetValue(2, 1, CellValue::Text("a"));
  workbook_.SaveAs(kFile);

  Workbook& other = NewWorkbook();
  Worksheet& detour = other.Worksheets(1);
  detour.SetValue(2, 2, CellValue::Text("a"));
  detour.SetValue(2, 1, CellValue::Date(1.5));
  detour.SetValue(40, 9, CellValue::Text("gone"));
  detour.SetValue(1, 2, CellValue::Text("key"));
  detour.SetValue(40, 9, CellValue{});
  detour.SetValue(1, 3, CellValue::Text("gone too"));
  detour.SetValue(1, 3, CellValue::Text(""));
  detour.DeleteColumn(1);
  other.SaveAs("/plates/other.xls");

  EXPECT_EQ(files_.Content("/plates/other.xls"), files_.Content(kFile));
}

TEST_F(OutputWorkbookTest, IsSavedOverNothingButItsOwnKind) {
  for (const char* name : {"/plates/out.xlsm", "/plates/out.TXT", "/plates/a.xls.ods"}) {
    EXPECT_THAT(ErrorOf([&] { workbook_.SaveAs(name); }).Description(), HasSubstr("ends with .xls"))
        << name;
  }
  files_.AddFolder("/plates.csv");
  for (const char* name : {"/plates/out.XLS", "/plates/plain", "/plates.csv/1.5"}) {
    EXPECT_NO_THROW(workbook_.SaveAs(name)) << name;
  }
  SaveAndOpen(workbook_).Close();
  const std::string former = files_.Content(kFile);
  sheet_.SetValue(1, 1, CellValue::Number(1));
  EXPECT_THAT(ErrorOf([&] { workbook_.SaveAs("/plates/../plates/out.xls"); }).Description(),
              HasSubstr("was read"));
  EXPECT_EQ(files_.Content(kFile), former);
}

TEST_F(OutputWorkbookTest, LeavesTheFormerFileWhenSavingFails) {
  files_.AddFile(kFile, "former");
  for (int row = 1; row <= 20000; ++row) sheet_.SetValue(row, 1, CellValue::Number(row / 7.0));
  for (const std::size_t space : {0u, 100u, 70000u, 600000u}) {
    files_.LimitSpace(space);
    const Error error = ErrorOf([&] { workbook_.SaveAs(kFile); });
    EXPECT_EQ(error.Number(), error_number::kAutomation) << space;
    EXPECT_THAT(error.Description(), HasSubstr(kFile));
    EXPECT_EQ(files_.Content(kFile), "former");
    EXPECT_EQ(files_.List("/plates").size(), 1u);
    EXPECT_EQ(workbook_.Path(), "");
  }
  files_.LimitSpace(1000000);
  workbook_.SaveAs(kFile);
  EXPECT_NE(files_.Content(kFile), "former");
  EXPECT_EQ(workbook_.Name(), "out.xls");
  EXPECT_EQ(workbook_.Path(), "/plates");
}

}  // namespace
}  // namespace korvex
