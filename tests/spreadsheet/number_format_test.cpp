#include "spreadsheet/number_format.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

TEST(NumberFormat, IsADateWhenADateLetterStandsForItself) {
  for (const char* date :
       {"m/d/yyyy", "yyyy-mm-dd hh:mm", "[h]:mm", "[SS]", "mm:ss.0", "D-MMM", "h:mm AM/PM",
        "[$-409]d/m/yy;@", "[Red]d", "\"on\" d", "[$-F800]dddd\\, mmmm dd"}) {
    EXPECT_TRUE(IsDateFormat(date)) << date;
  }
  for (const char* number : {"General", "0.00E+00", "#,##0_d", "[Red]0.00", "[>=100]0;[Black]-0",
                             "0\\d", "0*d", "0.0\" days\"", "[$USD] 0.00", "_(\"$\"* #,##0_);_(@_)",
                             "@", "", "\"d", "[d", "0\\", "[hm]"}) {
    EXPECT_FALSE(IsDateFormat(number)) << number;
  }
}

}  // namespace
}  // namespace korvex
