#include "ui/file_pattern.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"

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

}  // namespace
}  // namespace korvex
