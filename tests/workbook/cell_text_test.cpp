#include "workbook/cell_text.h"

#include <gtest/gtest.h>

#include <utility>

#include "platform/error.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

TEST(CellText, WritesNumbersWithFifteenDigits) {
  const std::pair<double, const char*> cases[] = {
      {-0.0, "0"},
      {-17, "-17"},
      {-1234.5, "-1234.5"},
      {0.1 + 0.2, "0.3"},
      {2.0 / 3, "0.666666666666667"},
      {123456789.123456789, "123456789.123457"},
      {999999999999999, "999999999999999"},
      {99999999999999.95, "100000000000000"},
      {999999999999999.9, "1E+15"},
      {1.234e16, "1.234E+16"},
      {-1e100, "-1E+100"},
      {0.0125, "0.0125"},
      {1e-15, "0.000000000000001"},
      {1e-16, "1E-16"},
      {1.0 / 12, "8.33333333333333E-02"},
      {5e-324, "4.94065645841247E-324"},
  };
  for (const auto& [number, text] : cases) EXPECT_EQ(CellText(CellValue::Number(number)), text);
}

TEST(CellText, WritesDatesRoundedToTheSecond) {
  constexpr double kSecond = 1.0 / 86400;
  const std::pair<double, const char*> cases[] = {
      {0, "12:00:00 AM"},
      {0.5, "12:00:00 PM"},
      {1, "12/31/1899"},
      {60, "2/28/1900"},
      {37957 + 10.25 / 24, "12/2/2003 10:15:00 AM"},
      {41000 + 13.0 / 24 + 5 * kSecond, "4/1/2012 1:00:05 PM"},
      {41000 + 59.6 * kSecond, "4/1/2012 12:01:00 AM"},
      {41000 + 3599.7 * kSecond, "4/1/2012 1:00:00 AM"},
      {41000 - 0.4 * kSecond, "4/1/2012"},
      {41000 + 0.4 * kSecond, "4/1/2012"},
      {2958465, "12/31/9999"},
      {2958466, "2958466"},
      {-1.25, "12/29/1899 6:00:00 AM"},
  };
  for (const auto& [serial, text] : cases) {
    EXPECT_EQ(CellText(CellValue::Date(serial)), text) << serial;
  }
}

TEST(CellText, WritesTheOtherKinds) {
  EXPECT_EQ(CellText(CellValue{}), "");
  EXPECT_EQ(CellText(CellValue::Boolean(true)), "True");
  EXPECT_EQ(CellText(CellValue::Boolean(false)), "False");
  EXPECT_EQ(CellText(CellValue::ErrorCode(7)), "Error 2007");
  std::string line = "name=";
  AppendCellText(CellValue::Text(" Äb "), line);
  EXPECT_EQ(line, "name= Äb ");
}

TEST(Numeric, ReadsWhatLooksLikeANumber) {
  const std::pair<const char*, double> cases[] = {
      {"0017", 17},      {"\t5\r\n", 5}, {"5-", -5},     {"+5", 5},          {"- 5", -5},
      {"( 5.5 )", -5.5}, {"$5", 5},      {"-$5", -5},    {"$-5", -5},        {"$1,234.5", 1234.5},
      {"1e5", 1e5},      {"1E+5", 1e5},  {"5.", 5},      {".5", 0.5},        {"1e-400", 0},
      {"&H10", 16},      {"&hff", 255},  {"&HFFFF", -1}, {"&H10000", 65536}, {"1,2", 12},
  };
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(ParseNumber(text), number) << text;
    EXPECT_TRUE(IsNumeric(CellValue::Text(text))) << text;
  }
  for (const char* text :
       {"",    " ",    "5%",        "1/2", "1:00", ".",    "-",    "$",     "1.2.3",       "12 34",
        "1e",  "1e+",  "1E+400",    "NaN", "inf",  "0x10", "&H",   "&HG",   "&H123456789", "--5",
        "-5-", "(-5)", "(5",        "()",  "$$5",  ",5",   "1,,2", "1.5,3", "1e1,0",       "A1",
        "e5",  "5 $",  "5\xC2\xA0", "٣"}) {
    EXPECT_FALSE(ParseNumber(text)) << text;
    EXPECT_FALSE(IsNumeric(CellValue::Text(text))) << text;
  }
}

TEST(Numeric, CountsKindsOfCells) {
  EXPECT_TRUE(IsNumeric(CellValue{}));
  EXPECT_TRUE(IsNumeric(CellValue::Number(1)));
  EXPECT_TRUE(IsNumeric(CellValue::Boolean(false)));
  EXPECT_FALSE(IsNumeric(CellValue::Date(1)));
  EXPECT_FALSE(IsNumeric(CellValue::ErrorCode(42)));
}

TEST(Numeric, ConvertsToSixteenBitsWithHalvesToEven) {
  for (const auto& [text, value] : {std::pair{"-1", -1},
                                    {" 3 ", 3},
                                    {"2.5", 2},
                                    {"3.5", 4},
                                    {"-2.5", -2},
                                    {"32767.4", 32767},
                                    {"-32768", -32768}}) {
    EXPECT_EQ(ToInt16(text), value) << text;
  }
  for (const auto& [text, number] : {std::pair{"32767.5", error_number::kOverflow},
                                     {"1e9", error_number::kOverflow},
                                     {"P1", error_number::kTypeMismatch},
                                     {"", error_number::kTypeMismatch}}) {
    EXPECT_EQ(ErrorOf([&] { ToInt16(text); }).Number(), number) << text;
  }
}

TEST(CellFromText, MakesANumberOfItsOwnPlainFormOnly) {
  for (const char* text : {"17", "0", "-0.25", "0.25", "999999999999999", "0.333333333333333",
                           "-0.000000000000001", "123456789.123457"}) {
    const CellValue value = CellFromText(text);
    EXPECT_EQ(value.kind, CellKind::kNumber) << text;
    EXPECT_EQ(CellText(value), text);
  }
  for (const char* text :
       {"", "0017", "1E5", "1E+15", "12/03/2002", "=A1", "-0", "+1", " 1", "1.0", ".5", "5.",
        "1,000", "-", "1-2", "1.2.3", "1000000000000000", "0.3333333333333333", "ABC12"}) {
    EXPECT_EQ(CellFromText(text), CellValue::Text(text)) << text;
  }
}

}  // namespace
}  // namespace korvex
