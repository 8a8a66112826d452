#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>

#include "spreadsheet/embedded_application.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

using ::testing::HasSubstr;

class OutputFormats : public ::testing::Test {
 protected:
  OutputFormats() { files_.AddFolder("/plates"); }

  Workbook& NewWorkbook(const std::string& name) {
    Workbook& workbook = application_.AddWorkbook(name);
    while (workbook.WorksheetCount() > 1) workbook.Worksheets(1).Delete();
    return workbook;
  }
  std::string CauseOf(const std::function<void()>& call) { return ErrorOf(call).Description(); }

  MemoryFileSystem files_{PathStyle::kLinux};
  EmbeddedApplication application_{files_};
};

TEST_F(OutputFormats, KeepEveryValueInXlsx) {
  std::vector<CellValue> values = {CellValue::Boolean(true), CellValue::Boolean(false),
                                   CellValue::Date(0.75), CellValue::Date(37000),
                                   CellValue::Date(37000.123456789)};
  for (const double number :
       {-1.0, 0.1 + 0.2, std::nextafter(0.35, 1.0), 1.0 / 3, 100000.0, 1e15, double{0.456f},
        std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()}) {
    values.push_back(CellValue::Number(number));
  }
  for (const int code : {0, 7, 15, 23, 29, 36, 42}) values.push_back(CellValue::ErrorCode(code));
  using namespace std::string_view_literals;
  for (const std::string_view text :
       {"0017"sv, "=A1"sv, " blanks "sv, "a\tb\nc\r\nd"sv, "<&>\"'"sv, "_x0041_ _x_ _"sv,
        "\u00E9\u0416\u65E5 \U0001D11E"sv, "\x01\0\x1F\uFFFE"sv}) {
    values.push_back(CellValue::Text(text));
  }
  Workbook& workbook = NewWorkbook("out.xlsx");
  Worksheet& sheet = workbook.Worksheets(1);
  sheet.SetName("R\u00FCn & \u65E5");
  int row = 2;
  for (const CellValue& value : values) {
    for (const int column : {1, 3, 300, 16384}) sheet.SetValue(row, column, value);
    row += 30'000;
  }
  sheet.SetValue(row, 1, CellValue::Text("bad \xFF byte"));
  workbook.SaveAs("/plates/out.xlsx");
  Worksheet& read = application_.OpenWorkbook("/plates/out.xlsx", {}).Worksheets(1);
  EXPECT_EQ(read.Name(), sheet.Name());
  EXPECT_EQ(read.LastCell(), (CellAddress{row, 16384}));
  EXPECT_EQ(read.Value(row, 1).text, "bad \uFFFD byte");
  EXPECT_EQ(read.Value(1048576, 1), CellValue());
  EXPECT_NE(CauseOf([&] { read.Value(1048577, 1); }), "");
  row = 2;
  for (const CellValue& value : values) {
    for (const int column : {1, 3, 300, 16384}) EXPECT_EQ(read.Value(row, column), value) << row;
    EXPECT_EQ(read.CountA(row), 4);
    row += 30'000;
  }
}

TEST_F(OutputFormats, PutValuesIntoCsvForPrograms) {
  Workbook& workbook = NewWorkbook("out.csv");
  Worksheet& sheet = workbook.Worksheets(1);
  const std::vector<std::vector<CellValue>> rows = {
      {CellValue::Text("well"), CellValue::Text("a,b"), CellValue::Text("say \"\xC2\xB5\"")},
      {CellValue::Number(0.1 + 0.2), CellValue(), CellValue::Text("two\r\nlines")},
      {CellValue::Text("=A1"), CellValue::Date(37593.5 + 0.25 / 86400), CellValue::Date(1.5)},
      {},
      {CellValue::Date(37593.5), CellValue::Date(37593), CellValue::Date(0.25)},
      {CellValue::Boolean(true), CellValue::ErrorCode(42), CellValue::Number(-100000)}};
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t column = 0; column < rows[row].size(); ++column) {
      sheet.SetValue(static_cast<int>(row) + 1, static_cast<int>(column) + 1, rows[row][column]);
    }
  }
  workbook.SaveAs("/plates/out.csv");
  EXPECT_EQ(files_.Content("/plates/out.csv"),
            "\xEF\xBB\xBFwell,\"a,b\",\"say \"\"\xC2\xB5\"\"\"\r\n"
            "0.30000000000000004,,\"two\r\nlines\"\r\n"
            "=A1,2002-12-03 12:00:00.250,1.5\r\n"
            ",,\r\n"
            "2002-12-03 12:00:00,2002-12-03,0.25\r\n"
            "TRUE,#N/A,-100000\r\n");
}

TEST_F(OutputFormats, RefuseWhatTheyCannotHoldAndNameTheOneThatCan) {
  const CellValue long_text = CellValue::Text(files_.DefaultFolder());
  const std::string longest(32768, 'x');
  const struct {
    const char* name;
    CellAddress place;
    CellValue value;
    std::vector<const char*> cause;  // none for what is taken
  } cases[] = {
      {"a.xls", {65537, 1}, long_text, {"65,536 rows", "row 65,537", "ends with .xlsx"}},
      {"a.xls", {1, 257}, long_text, {"256 columns", "column 257", "ends with .xlsx"}},
      {"a.XLSX", {1048576, 16384}, long_text, {}},
      {"a.xlsx", {1048577, 1}, long_text, {"1,048,576 rows", "ends with .csv"}},
      {"a.xlsx", {1, 16385}, long_text, {"16,384 columns", "ends with .csv"}},
      {"a.xlsx", {1, 1}, CellValue::Text(longest), {"32,767", "ends with .csv"}},
      {"a.csv", {1048577, 16385}, CellValue::Text(longest), {}},
  };
  for (const auto& test : cases) {
    Worksheet& sheet = NewWorkbook(test.name).Worksheets(1);
    const std::string cause =
        CauseOf([&] { sheet.SetValue(test.place.row, test.place.column, test.value); });
    EXPECT_EQ(cause.empty(), test.cause.empty()) << test.name << cause;
    for (const char* part : test.cause) EXPECT_THAT(cause, HasSubstr(part));
  }
  // What was to become another file.
  Workbook& large = NewWorkbook("a.csv");
  large.Worksheets(1).SetValue(65537, 1, CellValue::Text(longest));
  EXPECT_THAT(CauseOf([&] { large.SaveAs("/plates/a.xls"); }), HasSubstr("ends with .xlsx"));
  EXPECT_THAT(CauseOf([&] { large.SaveAs("/plates/a.xlsx"); }), HasSubstr("32,767"));
  EXPECT_THAT(CauseOf([&] { application_.AddWorkbook("a.csv").SaveAs("/plates/a.csv"); }),
              HasSubstr("one sheet"));
  EXPECT_TRUE(files_.List("/plates").empty());
}

TEST_F(OutputFormats, SaveEqualCellsAsEqualBytes) {
  for (const bool backwards : {false, true}) {
    Workbook& workbook = NewWorkbook("a.xlsx");
    Worksheet& sheet = workbook.Worksheets(1);
    if (backwards) sheet.SetValue(9, 9, CellValue::Text("gone"));
    for (int i = 1; i <= 4; ++i) {
      const int row = backwards ? 5 - i : i;
      sheet.SetValue(row, 1, CellValue::Date(row));
      sheet.SetValue(row, 2, CellValue::Text(std::to_string(row)));
    }
    sheet.SetValue(9, 9, CellValue());
    workbook.SaveAs(backwards ? "/plates/b.xlsx" : "/plates/a.xlsx");
  }
  EXPECT_EQ(files_.Content("/plates/a.xlsx"), files_.Content("/plates/b.xlsx"));
}

TEST_F(OutputFormats, LeaveTheFormerFileWhenSavingFails) {
  for (const std::string target : {"/plates/a.xlsx", "/plates/a.csv"}) {
    files_.AddFile(target, "former");
    Workbook& workbook = NewWorkbook(target);
    Worksheet& sheet = workbook.Worksheets(1);
    for (int row = 1; row <= 2000; ++row) sheet.SetValue(row, 1, CellValue::Number(row / 7.0));
    files_.LimitSpace(3000);
    EXPECT_THAT(CauseOf([&] { workbook.SaveAs(target); }), HasSubstr(target));
    EXPECT_EQ(files_.Content(target), "former");
  }
}

}  // namespace
}  // namespace korvex
