#include "spreadsheet/xls/biff_globals.h"

#include <gtest/gtest.h>

#include "spreadsheet/cells/typed_value.h"

#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

Bytes Xf(unsigned format) {
  return Record(0x00E0, U16(0) + U16(format) + Bytes(16, '\0'));
}
Bytes Format(unsigned id, std::string_view text) {
  return Record(0x041E, U16(id) + NarrowText(text));
}

TEST(BiffGlobals, NumbersWithADateFormatAreDates) {
  const struct {
    const char* condition;
    Bytes globals;
    double number;
    const char* cell;
  } cases[] = {
      {"built-in date", Xf(14), 37593.5, "date 12/3/2002 12:00:00 PM"},
      {"built-in number", Xf(2), 37593, "number 37593"},
      {"own format, after its XF", Xf(164) + Format(164, "yyyy-mm-dd"), 37593, "date 12/3/2002"},
      {"own format under a low id", Format(50, "0.00") + Xf(50), 37593, "number 37593"},
      {"built-in date written anew as a number", Format(14, "General") + Xf(14), 37593,
       "number 37593"},
      {"no XF at all", {}, 37593, "number 37593"},
      {"1904", Record(0x0022, U16(1)) + Xf(14), 36131, "date 12/3/2002"},
      {"1904, number", Record(0x0022, U16(1)) + Xf(0), 36131, "number 36131"},
      {"before all dates", Xf(14), -1, "number -1"},
      {"after all dates", Xf(14), 2958466, "number 2958466"},
  };
  for (const auto& test : cases) {
    const Bytes formula = Record(0x0006, CellHead(0, 1) + F64(test.number) + Bytes(8, '\0'));
    const std::string cell = test.cell;
    EXPECT_EQ(ListingOfRecords(NumberCell(0, 0, test.number) + formula, test.globals),
              "1,1 " + cell + " | 1,2 " + cell)
        << test.condition;
  }
}

TEST(NumberFormat, IsADateWhenADateLetterStandsForItself) {
  for (const char* date : {"yyyy-mm-dd hh:mm", "[h]:mm", "[SS]", "mm:ss.0", "D-MMM", "h:mm AM/PM",
                           "[$-409]d/m/yy;@", "[Red]d", "\"on\" d", "[$-F800]dddd\\, mmmm dd"}) {
    EXPECT_NE(DateFormOf(date), DateForm::kNone) << date;
  }
  for (const char* number : {"General", "0.00E+00", "#,##0_d", "[Red]0.00", "[>=100]0;[Black]-0",
                             "0\\d", "0*d", "0.0\" days\"", "[$USD] 0.00", "_(\"$\"* #,##0_);_(@_)",
                             "@", "", "\"d", "[d", "0\\", "[hm]"}) {
    EXPECT_EQ(DateFormOf(number), DateForm::kNone) << number;
  }
  EXPECT_EQ(DateFormOf("h:mm"), DateForm::kMoment);
  EXPECT_EQ(DateFormOf("[h]:mm"), DateForm::kElapsed);
  EXPECT_EQ(BuiltInDateForm(46), DateForm::kElapsed);
}

TEST(BiffGlobals, InfersWhatBofDoesNotSay) {
  const Bytes label = Record(0x0204, CellHead(0, 0) + ByteText("old"));
  const Bytes good = OneSheet(NumberCell(0, 0, 1));
  const std::size_t sheet = good.size() - 4 - 18 - 12;
  Bytes no_version = good;
  PutU16(no_version, 4, 0);
  Bytes no_sheet_bof = good;
  no_sheet_bof.replace(sheet, 12, Record(0x0200, Bytes(8, '\0')));
  Bytes old_without_version = OneSheet(label, {}, 0x0500);
  PutU16(old_without_version, 4, 0);
  const Bytes lone_sheet =
      Record(0x0809, U16(0x0500) + U16(0x10) + U16(0)) + label + Record(0x000A);
  const struct {
    const char* condition;
    CompoundBytes file;
    const char* cells;
  } cases[] = {
      {"version 0", {.stream = no_version}, "1,1 number 1"},
      {"version 0 in a stream of Excel 5",
       {.stream = old_without_version, .stream_name = "Book"},
       "1,1 text old"},
      {"sheet without BOF", {.stream = no_sheet_bof}, "1,1 number 1"},
      {"sheet without globals", {.stream = lone_sheet, .stream_name = "Book"}, "1,1 text old"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ListingOf(test.file.Build()), test.cells) << test.condition;
  }
}

}  // namespace
}  // namespace korvex::test
