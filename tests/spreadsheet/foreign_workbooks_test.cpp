// Workbooks that other programs wrote; tests/data/README.md says which.
#include <gtest/gtest.h>

#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

TEST(ForeignWorkbooks, GiveTheCellsThatWereWritten) {
  const auto plate = [](const std::string& half_past_six, const std::string& formula) {
    return "1,1 text 3/12/2002 10:15:00 AM | 2,1 text plate | 2,2 text compound ID | 2,3 text "
           "Delta OD | 3,1 number 1 | 3,2 text CMPα-7/µM | 3,3 number 0.123456789012345 | 4,1 date "
           "12/3/2002 12:00:00 PM | 4,2 date " +
           half_past_six + " | 4,3 number -1.5 | 5,1 boolean True | 5,2 " + formula;
  };
  const std::string in_1900 = "6:30:00 AM", in_1904 = "1/1/1904 6:30:00 AM";
  const std::string results =
      "1,1 text compound | 1,2 number 0.25 | 1,3 text abαβ | 1,4 text  | 1,5 boolean True | "
      "1,6 error Error 2007 | 1,7 error Error 2042 | 1,8 date 12/3/2002 | 1,9 date 12/3/2002 | "
      "1,10 text two\nlines | 2,4 text ";
  std::string long_text;
  for (int i = 0; i < 2000; ++i) long_text += "long ";
  const std::string cut_by_gnumeric = long_text.substr(0, 8221);
  const struct {
    const char* file;
    std::string cells;
    CellAddress last;
  } cases[] = {
      {"xlwt-plate.xls", plate(in_1900, "uncalculated"), {6, 4}},
      {"xlwt-1904.xls", plate(in_1904, "uncalculated"), {6, 4}},
      {"libreoffice-plate.ods", plate(in_1900, "error Error 2007"), {5, 3}},
      {"libreoffice-1904.xlsx", plate(in_1904, "error Error 2007"), {6, 4}},
      {"openpyxl-plate.xlsx", plate(in_1900, "uncalculated"), {6, 4}},
      {"openpyxl-iso-dates.xlsx", plate(in_1900, "uncalculated"), {6, 4}},
      {"libreoffice-results.xls", results + long_text, {2, 10}},
      {"libreoffice-results.xlsx", results + long_text, {2, 10}},
      {"libreoffice-results.ods", results + long_text, {2, 10}},
      {"libreoffice-results.xml", results + long_text, {2, 10}},
      {"gnumeric-results.ods", results + cut_by_gnumeric, {2, 10}},
      {"gnumeric-excel95.xls", results + cut_by_gnumeric, {2, 10}},
      {"gnumeric-both-streams.xls", results + cut_by_gnumeric, {2, 10}},
  };
  for (const auto& test : cases) {
    OpenedWorkbook workbook(DataFile(test.file));
    EXPECT_EQ(Listing(workbook.Cells()), test.cells) << test.file;
    EXPECT_EQ(workbook.Cells().LastCell(), test.last) << test.file;
  }
}

TEST(ForeignWorkbooks, KeepChartsAndHiddenSheetsInOrder) {
  EXPECT_EQ(OpenedWorkbook(DataFile("gnumeric-excel95.xls")).Sheets()[1].name, "Größe µ");
  OpenedWorkbook workbook(DataFile("writeexcel-charts.xls"));
  std::string sheets;
  for (const SheetInfo& sheet : workbook.Sheets()) {
    sheets += sheet.name + (sheet.kind == SheetKind::kChart ? " chart;" : ";");
  }
  EXPECT_EQ(sheets, "Chart1 chart;data;notes;");
  EXPECT_EQ(Listing(workbook.Cells(1)),
            "1,1 text plate | 1,2 text well | 1,3 text Delta OD | 2,1 number 1 | 2,2 text A1 | "
            "2,3 number 0.5 | 2,4 date 12/3/2002 | 3,1 number 1 | 3,2 text α1 | 3,3 number 1.25 | "
            "3,4 text 0.5 OD | 3,5 number 1.75");
  EXPECT_EQ(workbook.Cells(1).LastCell(), (CellAddress{9, 8}));
  OpenedWorkbook packed(DataFile("openpyxl-plate.xlsx"));
  EXPECT_EQ(packed.Sheets()[2].kind, SheetKind::kChart);
  EXPECT_EQ(Listing(packed.Cells(2)), "");
}

TEST(ForeignWorkbooks, KeepTextsWholeThatRecordsCut) {
  OpenedWorkbook workbook(DataFile("xlwt-texts-over-continue.xls"));
  const SheetCells& cells = workbook.Cells();
  ASSERT_EQ(cells.Count(), 40u);
  for (int row = 0; row < 40; ++row) {
    std::string text = std::to_string(row) + ":";
    for (int i = 0; i < 331 + 7 * row; ++i) text += row % 3 == 0 ? "α" : "x";
    EXPECT_EQ(cells.Value(row + 1, 1).text, text);
  }
}

}  // namespace
}  // namespace korvex::test
