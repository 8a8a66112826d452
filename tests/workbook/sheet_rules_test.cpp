#include "workbook/sheet_rules.h"

#include <gmock/gmock.h>

#include <utility>

#include "platform/error.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

TEST(SheetName, IsMadeOfAFolderNameThatNoSheetCouldHave) {
  const std::string thirty(30, 'x');
  const std::pair<std::string, std::string> names[] = {
      {"Screen 12 (b)", "Screen 12 (b)"},
      {"a\\b/c?d*e[f]g:h\x01", "a_b_c_d_e_f_g_h_"},
      {"'it's'", "_it's_"},
      {"caf\xE9 [1]", "caf_ _1_"},
      {thirty + "äb", thirty + "ä"},
      {thirty + "\U0001F9EA", thirty},
      {thirty + "'z", thirty + "_"},
      {"history", "history_"},
  };
  for (const auto& [folder, name] : names) {
    EXPECT_EQ(SheetNameFromFolder(folder), name);
    EXPECT_NO_THROW(CheckSheetName(name));
    if (folder != name) {
      EXPECT_EQ(ErrorOf([&, &refused = folder] { CheckSheetName(refused); }).Number(), 1004)
          << folder;
    }
  }
}

TEST(ColumnLetters, GoOnWithTwoAndThreeLetters) {
  for (const auto& [column, letters] : {std::pair{1, "A"},
                                        {26, "Z"},
                                        {27, "AA"},
                                        {702, "ZZ"},
                                        {703, "AAA"},
                                        {kXlsxColumns, "XFD"}}) {
    EXPECT_EQ(ColumnLetters(column), letters);
  }
}

}  // namespace
}  // namespace korvex
