#include "spreadsheet/output_workbook.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>

#include "spreadsheet/embedded_application.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

using ::testing::HasSubstr;
using namespace std::string_view_literals;

class OutputWorkbookTest : public ::testing::Test {
 protected:
  OutputWorkbookTest() { files_.AddFolder("/plates"); }

  // A workbook of one sheet.
  Workbook& NewWorkbook(const std::string& name) {
    Workbook& workbook = application_.AddWorkbook(name);
    while (workbook.WorksheetCount() > 1) workbook.Worksheets(1).Delete();
    return workbook;
  }
  Workbook& SaveAndOpen(Workbook& workbook, const std::string& file) {
    workbook.SaveAs(file);
    return application_.OpenWorkbook(file, {});
  }

  MemoryFileSystem files_{PathStyle::kLinux};
  EmbeddedApplication application_{files_};
};

// What holds for every format, by the ending of its files.
class OutputFormats : public OutputWorkbookTest, public ::testing::WithParamInterface<const char*> {
 protected:
  const std::string file_ = std::string("/plates/out") + GetParam();
};
INSTANTIATE_TEST_SUITE_P(All, OutputFormats, ::testing::Values(".xls", ".xlsx", ".csv", ".tsv"),
                         [](const auto& format) { return std::string(format.param).substr(1); });

TEST_P(OutputFormats, SaveEqualCellsAsEqualBytes) {
  Workbook& workbook = NewWorkbook(file_);
  workbook.Worksheets(1).SetValue(1, 1, CellValue::Text("key"));
  workbook.Worksheets(1).SetValue(2, 1, CellValue::Text("a"));
  workbook.Worksheets(1).SetValue(2, 2, CellValue::Date(2));
  workbook.SaveAs(file_);
  const std::string first = files_.Content(file_);

  Workbook& other = NewWorkbook(file_);
  Worksheet& detour = other.Worksheets(1);
  detour.SetValue(2, 3, CellValue::Date(2));
  detour.SetValue(2, 2, CellValue::Text("a"));
  detour.SetValue(2, 1, CellValue::Date(1.5));
  detour.SetValue(40, 9, CellValue::Text("gone"));
  detour.SetValue(1, 2, CellValue::Text("key"));
  detour.SetValue(40, 9, CellValue{});
  detour.SetValue(1, 4, CellValue::Text("gone too"));
  detour.SetValue(1, 4, CellValue::Text(""));
  detour.DeleteColumn(1);
  other.SaveAs(file_);
  EXPECT_EQ(files_.Content(file_), first);
}

TEST_P(OutputFormats, LeaveTheFormerFileWhenSavingFails) {
  files_.AddFile(file_, "former");
  Workbook& workbook = NewWorkbook(file_);
  for (int row = 1; row <= 20000; ++row) {
    workbook.Worksheets(1).SetValue(row, 1, CellValue::Number(row / 7.0));
  }
  for (const std::size_t space : {0u, 100u, 70000u}) {
    files_.LimitSpace(space);
    const Error error = ErrorOf([&] { workbook.SaveAs(file_); });
    EXPECT_EQ(error.Number(), error_number::kAutomation) << space;
    EXPECT_THAT(error.Description(), HasSubstr(file_));
    EXPECT_EQ(files_.Content(file_), "former");
    EXPECT_EQ(files_.List("/plates").size(), 1u);
    EXPECT_EQ(workbook.Path(), "");
  }
  files_.LimitSpace(1000000);
  workbook.SaveAs(file_);
  EXPECT_NE(files_.Content(file_), "former");
  EXPECT_EQ(workbook.Name(), file_.substr(8));
  EXPECT_EQ(workbook.Path(), "/plates");
}

TEST_F(OutputWorkbookTest, KeepsEveryValueThroughAFile) {
  std::vector<CellValue> values = {CellValue::Boolean(true), CellValue::Boolean(false),
                                   CellValue::Date(0.75), CellValue::Date(37000),
                                   CellValue::Date(37000.123456789)};
  for (const double number :
       {-1.0, 5368709.11, 536870911.0, 536870912.0, -536870913.0, 0.1 + 0.2,
        0.29,                       // no 29 when multiplied by 100
        std::nextafter(0.35, 1.0),  // but this is 35
        1.0 / 3, 100000.0, 1e15, double{0.456f}, std::numeric_limits<double>::max(),
        std::numeric_limits<double>::denorm_min()}) {
    values.push_back(CellValue::Number(number));
  }
  for (const int code : {0, 7, 15, 23, 29, 36, 42}) values.push_back(CellValue::ErrorCode(code));
  for (const std::string_view text :
       {"0017"sv, "=A1"sv, " blanks "sv, "a\tb\nc\r\nd"sv, "<&>\"'"sv, "_x0041_ _x_ _"sv,
        "\u00E9\u0416\u65E5 \U0001D11E"sv, "\x01\0\x1F\uFFFE"sv}) {
    values.push_back(CellValue::Text(text));
  }
  const struct {
    std::string file;
    std::vector<int> columns;
    int row_step;
    CellAddress end;  // of a sheet
  } formats[] = {{"/plates/a.xls", {1, 2, 4, 256}, 1'900, {65536, 256}},
                 {"/plates/a.xlsx", {1, 3, 300, 16384}, 30'000, {1048576, 16384}}};
  for (const auto& format : formats) {
    SCOPED_TRACE(format.file);
    Workbook& workbook = NewWorkbook(format.file);
    Worksheet& sheet = workbook.Worksheets(1);
    sheet.SetName("R\u00FCn & \u65E5");
    int row = 2;
    for (const CellValue& value : values) {
      for (const int column : format.columns) sheet.SetValue(row, column, value);
      EXPECT_EQ(sheet.Value(row, format.columns[2]), value) << row;
      row += format.row_step;
    }
    sheet.SetValue(format.end.row, 1, CellValue::Text("bad \xFF byte"));
    Worksheet& read = SaveAndOpen(workbook, format.file).Worksheets(1);
    EXPECT_EQ(read.Name(), sheet.Name());
    EXPECT_EQ(read.LastCell(), format.end);
    EXPECT_EQ(read.Value(format.end.row, 1).text, "bad \uFFFD byte");
    for (const CellAddress empty : {CellAddress{1, 1}, {3, 1}, {2, 5}, {format.end.row - 1, 1}}) {
      EXPECT_EQ(read.Value(empty.row, empty.column), CellValue()) << empty.row;
    }
    EXPECT_NE(ErrorOf([&] { read.Value(format.end.row + 1, 1); }).Number(), 0);
    row = 2;
    for (const CellValue& value : values) {
      for (const int column : format.columns) EXPECT_EQ(read.Value(row, column), value) << row;
      EXPECT_EQ(read.CountA(row), 4);
      row += format.row_step;
    }
  }
}

TEST_F(OutputWorkbookTest, PutsValuesIntoTextFilesForPrograms) {
  Workbook& workbook = NewWorkbook("out.csv");
  Worksheet& sheet = workbook.Worksheets(1);
  const std::vector<std::vector<CellValue>> rows = {
      {CellValue::Text("well"), CellValue::Text("a,b"), CellValue::Text("say \"\xC2\xB5\"")},
      {CellValue::Number(0.1 + 0.2), CellValue(), CellValue::Text("two\r\nlines")},
      {CellValue::Text("a\tb"), CellValue::Text("cr\r"), CellValue::Text("\"")},
      {CellValue::Text("=A1"), CellValue::Date(37593.5 + 0.25 / 86400), CellValue::Date(1.5)},
      {},
      {CellValue::Date(37593.5), CellValue::Date(37593), CellValue::Date(0.25)},
      {CellValue::Boolean(true), CellValue::ErrorCode(42), CellValue::Number(-100000)},
      {CellValue{CellKind::kElapsed, 0.25, {}}}};
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t column = 0; column < rows[row].size(); ++column) {
      sheet.SetValue(static_cast<int>(row) + 1, static_cast<int>(column) + 1, rows[row][column]);
    }
  }
  workbook.SaveAs("/plates/out.csv");
  EXPECT_EQ(files_.Content("/plates/out.csv"),
            "\xEF\xBB\xBFwell,\"a,b\",\"say \"\"\xC2\xB5\"\"\"\r\n"
            "0.30000000000000004,,\"two\r\nlines\"\r\n"
            "a\tb,\"cr\r\",\"\"\"\"\r\n"
            "=A1,2002-12-03 12:00:00.250,1.5\r\n"
            ",,\r\n"
            "2002-12-03 12:00:00,2002-12-03,0.25\r\n"
            "TRUE,#N/A,-100000\r\n"
            "0.25,,\r\n");
  workbook.SaveAs("/plates/out.TSV");
  EXPECT_EQ(files_.Content("/plates/out.TSV"),
            "\xEF\xBB\xBFwell\ta,b\t\"say \"\"\xC2\xB5\"\"\"\r\n"
            "0.30000000000000004\t\t\"two\r\nlines\"\r\n"
            "\"a\tb\"\t\"cr\r\"\t\"\"\"\"\r\n"
            "=A1\t2002-12-03 12:00:00.250\t1.5\r\n"
            "\t\t\r\n"
            "2002-12-03 12:00:00\t2002-12-03\t0.25\r\n"
            "TRUE\t#N/A\t-100000\r\n"
            "0.25\t\t\r\n");
}

TEST_F(OutputWorkbookTest, RefusesWhatTheFormatCannotHoldAndNamesTheOneThatCan) {
  const CellValue one = CellValue::Number(1);
  const std::string text(32768, 'x');
  const CellValue long_text = CellValue::Text(text);
  const struct {
    const char* name;
    CellAddress place;
    CellValue value;
    std::vector<const char*> cause;  // none for what is taken
  } cases[] = {
      {"a.xls", {65537, 1}, one, {"65,536 rows", "row 65,537", "ends with .xlsx"}},
      {"a.xls", {1, 257}, one, {"256 columns", "column 257", "ends with .xlsx"}},
      {"a.xls", {1, 0}, one, {"count from 1"}},
      {"a.xls", {9, 28}, long_text, {"Cell AB9 ", "32,767"}},
      {"a.xls", {9, 256}, CellValue::Number(1 / 0.0), {"Cell IV9 "}},
      {"a.xls", {1, 1}, CellValue::Date(std::nan("")), {"undefined"}},
      {"a.xls", {1, 1}, CellValue::ErrorCode(256), {"error code"}},
      {"a.XLSX", {1048576, 16384}, one, {}},
      {"a.xlsx", {1048577, 1}, one, {"1,048,576 rows", "ends with .csv"}},
      {"a.xlsx", {1, 16385}, one, {"16,384 columns", "ends with .csv"}},
      {"a.xlsx", {1, 1}, long_text, {"32,767", "ends with .csv"}},
      {"a.csv", {1048577, 16385}, long_text, {}},
      {"a.tsv", {1048577, 16385}, long_text, {}},
  };
  for (const auto& test : cases) {
    Worksheet& sheet = NewWorkbook(test.name).Worksheets(1);
    const Error error =
        ErrorOf([&] { sheet.SetValue(test.place.row, test.place.column, test.value); });
    EXPECT_EQ(error.Number(), test.cause.empty() ? 0 : error_number::kAutomation) << test.name;
    for (const char* part : test.cause) EXPECT_THAT(error.Description(), HasSubstr(part));
    if (!test.cause.empty()) {
      EXPECT_EQ(sheet.LastCell(), (CellAddress{1, 1}));
    }
  }
  // 32,767 characters are as many UTF-16 units, not bytes.
  std::string letters;
  for (int i = 0; i < 32767; ++i) letters += "\u0416";
  NewWorkbook("a.xls").Worksheets(1).SetValue(1, 1, CellValue::Text(letters));
  // What was to become another file.
  const auto cause_of = [](const std::function<void()>& call) {
    return ErrorOf(call).Description();
  };
  Workbook& large = NewWorkbook("a.csv");
  large.Worksheets(1).SetValue(65537, 1, long_text);
  EXPECT_THAT(cause_of([&] { large.SaveAs("/plates/a.xls"); }), HasSubstr("ends with .xlsx"));
  EXPECT_THAT(cause_of([&] { large.SaveAs("/plates/a.xlsx"); }), HasSubstr("32,767"));
  EXPECT_THAT(cause_of([&] { application_.AddWorkbook("a.csv").SaveAs("/plates/a.csv"); }),
              HasSubstr("A .csv file holds one sheet"));
  EXPECT_TRUE(files_.List("/plates").empty());
}

TEST_F(OutputWorkbookTest, MovesTheColumnsBehindADeletedOne) {
  Worksheet& sheet = NewWorkbook("a.xls").Worksheets(1);
  sheet.SetValue(1, 1, CellValue::Text("key"));
  sheet.SetValue(1, 2, CellValue::Text("A"));
  sheet.SetValue(600, 4, CellValue::Text("C"));
  sheet.DeleteColumn(3);
  sheet.DeleteColumn(1);
  sheet.DeleteColumn(387);
  EXPECT_EQ(sheet.Value(1, 1), CellValue::Text("A"));
  EXPECT_EQ(sheet.Value(600, 2), CellValue::Text("C"));
  EXPECT_EQ(sheet.LastCell(), (CellAddress{600, 2}));
  EXPECT_EQ(sheet.CountA(600), 1);
  EXPECT_EQ(sheet.Value(1, 387), CellValue{}) << "beyond the limits";
  EXPECT_EQ(sheet.Value(70000, 1), CellValue{});
}

TEST_F(OutputWorkbookTest, HasThreeSheetsWhoseNamesDiffer) {
  Workbook& workbook = application_.AddWorkbook("out.xls");
  EXPECT_EQ(workbook.WorksheetCount(), 3);
  Worksheet& third = workbook.Worksheets("SHEET3");
  EXPECT_EQ(third.Index(), 3);
  for (const auto& [name, rule] : {std::pair<std::string, const char*>{"sheet1", "another sheet"},
                                   {"", "empty"},
                                   {std::string(32, 'n'), "31"},
                                   {"a/b", R"(\ / ? * [ ] :)"}}) {
    const Error error = ErrorOf([&] { third.SetName(name); });
    EXPECT_EQ(error.Number(), error_number::kAutomation);
    EXPECT_THAT(error.Description(), HasSubstr(rule));
  }
  third.SetName("SHEET3");
  third.Activate();
  third.Delete();
  EXPECT_EQ(ErrorOf([&] { workbook.Worksheets(3); }).Number(), error_number::kSubscript);
  EXPECT_EQ(ErrorOf([&] { workbook.Worksheets("Sheet3"); }).Number(), error_number::kSubscript);
  workbook.Worksheets(2).SetValue(1, 1, CellValue::Text("second"));
  EXPECT_EQ(SaveAndOpen(workbook, "/plates/a.xls").Worksheets("Sheet2").Value(1, 1).text, "second");
  workbook.Worksheets(1).Delete();
  EXPECT_THAT(ErrorOf([&] { workbook.Worksheets(1).Delete(); }).Description(),
              HasSubstr("one sheet at least"));
}

TEST_F(OutputWorkbookTest, IsSavedOverNothingButItsOwnKind) {
  Workbook& workbook = NewWorkbook("out.xls");
  for (const char* name : {"/plates/out.xlsm", "/plates/out.TXT", "/plates/a.xls.ods"}) {
    EXPECT_THAT(ErrorOf([&] { workbook.SaveAs(name); }).Description(),
                HasSubstr("ends with .xls, .xlsx, .csv or .tsv."))
        << name;
  }
  files_.AddFolder("/plates.csv");
  for (const char* name : {"/plates/out.XLS", "/plates/plain", "/plates.csv/1.5"}) {
    EXPECT_NO_THROW(workbook.SaveAs(name)) << name;
  }
  SaveAndOpen(workbook, "/plates/out.xls").Close();
  const std::string former = files_.Content("/plates/out.xls");
  workbook.Worksheets(1).SetValue(1, 1, CellValue::Number(1));
  EXPECT_THAT(ErrorOf([&] { workbook.SaveAs("/plates/../plates/out.xls"); }).Description(),
              HasSubstr("was read"));
  EXPECT_EQ(files_.Content("/plates/out.xls"), former);
}

}  // namespace
}  // namespace korvex
