#include "engine/sheet_name.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

TEST(SheetNameFromFolder, HoldsOnlyWhatASheetNameCan) {
  EXPECT_EQ(SheetNameFromFolder("Screen 12 (b)"), "Screen 12 (b)");
  EXPECT_EQ(SheetNameFromFolder("a\\b/c?d*e[f]g:h\x01"), "a_b_c_d_e_f_g_h_");
  EXPECT_EQ(SheetNameFromFolder("'it's'"), "_it's_");
  EXPECT_EQ(SheetNameFromFolder(""), "");
  EXPECT_EQ(SheetNameFromFolder("caf\xE9 [1]"), "caf_ _1_");  // a name in Latin-1
}

TEST(SheetNameFromFolder, IsCutTo31UnitsWithoutSplittingACharacter) {
  const std::string thirty(30, 'x');
  EXPECT_EQ(SheetNameFromFolder(thirty + "yz"), thirty + "y");
  EXPECT_EQ(SheetNameFromFolder(thirty + "äb"), thirty + "ä");
  EXPECT_EQ(SheetNameFromFolder(thirty + "\U0001F9EA"), thirty);
  EXPECT_EQ(SheetNameFromFolder(thirty + "'z"), thirty + "_");
}

}  // namespace
}  // namespace korvex
