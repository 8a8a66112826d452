#include "ui/file_pattern.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"
#include "ui/chooser_layout.h"

namespace korvex {
namespace {

TEST(FilePattern, MatchesNamesAsFileListsDo) {
  const struct {
    const char* pattern;
    const char* name;
    bool matches;
  } cases[] = {
      {"*.xls", "Plate 1.XLS", true},
      {"*.xls", "plate.xlsx", false},
      {"*.*", "no dot", true},
      {"*.", "no dot", false},
      {"p?ate.xls", "plate.xls", true},
      {"p?ate.xls", "pate.xls", false},
      {"?.xls", "ä.xls", true},
      {"Ä.xls", "ä.xls", true},
      {"?.xls", "\xff.xls", true},
      {"*a*b", "aabxab", true},
      {"*a*b", "aabxa", false},
      {"**", "x", true},
      {"x*", "x", true},
      {"x", "", false},
      {"*.xls; *.csv ;", "b.csv", true},
      {"*.xls; *.csv ;", "b.txt", false},
      {"bijo.bijo", "plate.xls", false},
  };
  for (const auto& c : cases)
    EXPECT_EQ(FilePattern(c.pattern).Matches(c.name), c.matches) << c.pattern << " " << c.name;
}

TEST(FilePattern, RefusesWhatNoFileNameCanMatch) {
  for (const char* pattern : {"", " ", " ; ", "a/*.xls", "a\\b", "c:*", "\"x\"", "<x", "x>", "a|b"})
    EXPECT_EQ(ErrorOf([&] { FilePattern{pattern}; }).Number(), error_number::kInvalidCall)
        << pattern;
}

TEST(ChooserLayout, KeepsRoomOnBothSidesOfTheSplitter) {
  EXPECT_EQ(ClampSplitter(-50, 9000), 1320);
  EXPECT_EQ(ClampSplitter(3000, 9000), 3000);
  EXPECT_EQ(ClampSplitter(8171, 9000), 8170);
  // In too little room the file list keeps its own.
  EXPECT_EQ(ClampSplitter(1400, 2000), 1170);
}

}  // namespace
}  // namespace korvex
