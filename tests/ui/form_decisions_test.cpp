// What the forms decide without their controls.

#include <gtest/gtest.h>

#include <numeric>

#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "ui/file_pattern.h"
#include "ui/message_box_layout.h"
#include "ui/option_choices.h"

namespace korvex {
namespace {

TEST(FilePattern, MatchesNamesAsFileListsDo) {
  const struct {
    const char *pattern, *name;
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
      {"x*", "x", true},
      {"x", "", false},
      {"*.xls; *.csv ;", "b.csv", true},
      {"*.xls; *.csv ;", "b.txt", false},
      {"bijo.bijo", "plate.xls", false},
  };
  for (const auto& [pattern, name, matches] : cases)
    EXPECT_EQ(FilePattern(pattern).Matches(name), matches) << pattern << " " << name;
  for (const char* pattern : {"", " ; ", "a/*.xls", "a\\b", "c:*", "\"x\"", "<x", "x>", "a|b"})
    EXPECT_EQ(ErrorOf([&] { FilePattern{pattern}; }).Number(), error_number::kInvalidCall)
        << pattern;
}

TEST(ColumnList, AddsAndRemovesNothingWhileNothingIsSelected) {
  ColumnList list{{"ID"}, std::nullopt};
  EXPECT_EQ(AddToList({{"plate"}, std::nullopt}, list), std::nullopt);
  EXPECT_EQ(RemoveFromList(list), std::nullopt);
}

TEST(OutputFilters, GiveTheEndingThatTheUserMeans) {
  const TestPlatform platform;
  const struct {
    const char* name;
    int offered, chosen;
    const char* meant;
  } cases[] = {
      {"/runs/a.xls", 0, 0, "/runs/a.xls"},     {"/runs/a.XLS", 0, 1, "/runs/a.xlsx"},
      {"/runs/a.csv", 2, 0, "/runs/a.xls"},     {"/runs/a.xlsx", 0, 2, "/runs/a.xlsx"},
      {"/runs/1.2/a", 0, 2, "/runs/1.2/a.csv"}, {"/runs/a.b", 1, 0, "/runs/a.b"},
      {"/runs/a.tsv", 3, 2, "/runs/a.csv"},     {"/runs/a", 3, 3, "/runs/a.tsv"},
  };
  for (const auto& [name, offered, chosen, meant] : cases)
    EXPECT_EQ(OutputFileChosen(name, offered, chosen), meant) << name;
}

TEST(MessageBoxLayout, GrowsWithTheMessageAndTheButtonsAndNeverShrinks) {
  constexpr MessageBoxDesign kDesign{6000, 2000, {100, 1200, 1000, 400}, 900, 150};
  const struct {
    std::vector<int> captions;
    int message_height;
    bool has_icon;
    int form_width, form_height, message_left;
    TwipBox first_button;
  } cases[] = {
      {{300}, 850, true, 6000, 2000, 900, {2500, 1200, 1000, 400}},
      {{300}, 850, false, 6000, 2000, 150, {2500, 1200, 1000, 400}},
      // Below the message.
      {{300, 300}, 851, true, 6000, 2051, 900, {1900, 1201, 1000, 400}},
      // As wide as the widest caption needs, and in the middle as long as there is room.
      {{801, 300, 1200}, 100, true, 6000, 2000, 900, {700, 1200, 1400, 400}},
      {{2000, 2000, 2000}, 100, true, 7300, 2000, 900, {100, 1200, 2200, 400}},
  };
  for (const auto& c : cases) {
    const auto message_height = [&](int) { return c.message_height; };
    const MessageBoxLayout layout =
        LayOutMessageBox(kDesign, {c.captions, c.has_icon, message_height, 20'000, 15'000});
    EXPECT_EQ(layout.form_width, c.form_width);
    EXPECT_EQ(layout.form_height, c.form_height);
    const int message_width = c.form_width - c.message_left - 250;
    EXPECT_TRUE((layout.message == TwipBox{c.message_left, 150, message_width, c.message_height}));
    ASSERT_EQ(layout.buttons.size(), c.captions.size());
    TwipBox button = c.first_button;
    for (const TwipBox& placed : layout.buttons) {
      EXPECT_TRUE(placed == button) << placed.left << ", not " << button.left;
      button.left = button.Right() + 200;
    }
  }
}

TEST(WrappedLines, BreakBetweenWordsAndWithinTooLongOnes) {
  const std::pair<std::wstring, int> cases[] = {{L"", 1},
                                                {L"0123456789     ", 1},
                                                {L"one three six", 2},
                                                {L"to 0123456789", 2},
                                                {L"to 01234567890123456789 go", 4},
                                                {L"0123456789012345 four", 3}};
  for (const auto& [paragraph, lines] : cases) {
    std::vector<int> ends(paragraph.size());
    std::iota(ends.begin(), ends.end(), 1);
    EXPECT_EQ(WrappedLines(paragraph, ends, 10), lines) << testing::PrintToString(paragraph);
  }
  const int wide[] = {20, 40};
  EXPECT_EQ(WrappedLines(L"WW", wide, 10), 2);
}

}  // namespace
}  // namespace korvex
