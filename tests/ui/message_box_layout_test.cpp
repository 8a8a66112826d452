#include "ui/message_box_layout.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>

namespace korvex {
namespace {

constexpr MessageBoxDesign kDesign{6000, 2000, {100, 1200, 1000, 400}, 900, 150};

MessageBoxLayout LayOut(const std::vector<int>& captions, int message_height,
                        bool has_icon = true) {
  return LayOutMessageBox(
      kDesign, {captions, has_icon, [=](int) { return message_height; }, 20'000, 15'000});
}

TEST(MessageBoxLayout, KeepsTheDesignForAShortMessage) {
  const MessageBoxLayout layout = LayOut({300}, 850);

  EXPECT_EQ(layout.form_width, 6000);
  EXPECT_EQ(layout.form_height, 2000);
  EXPECT_EQ(layout.message, (TwipBox{900, 150, 6000 - 900 - 250, 850}));
  ASSERT_EQ(layout.buttons.size(), 1u);
  EXPECT_EQ(layout.buttons[0], (TwipBox{(6000 - 1000) / 2, 1200, 1000, 400}));
}

TEST(MessageBoxLayout, GivesTheTextThePlaceOfAMissingIcon) {
  const MessageBoxLayout layout = LayOut({300}, 100, false);

  EXPECT_EQ(layout.message, (TwipBox{150, 150, 6000 - 150 - 250, 100}));
}

TEST(MessageBoxLayout, GrowsDownwardsWithTheMessage) {
  const MessageBoxLayout layout = LayOut({300, 300}, 851);

  EXPECT_EQ(layout.buttons[0].top, 150 + 851 + 200);
  EXPECT_EQ(layout.buttons[1].top, layout.buttons[0].top);
  EXPECT_EQ(layout.form_height, layout.buttons[0].Bottom() + 450);
}

TEST(MessageBoxLayout, MakesAllButtonsAsWideAsTheWidestNeeds) {
  const MessageBoxLayout layout = LayOut({801, 300, 1200}, 100);

  const int span = 3 * 1400 + 2 * 200;
  const int left = 100 + (6000 - span) / 2 - 100;
  EXPECT_EQ(layout.form_width, 6000);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(
        (layout.buttons[static_cast<std::size_t>(i)] == TwipBox{left + i * 1600, 1200, 1400, 400}));
  }
}

TEST(MessageBoxLayout, WidensFormAndTextForItsButtons) {
  const MessageBoxLayout layout = LayOut({2000, 2000, 2000}, 100);

  EXPECT_EQ(layout.buttons[0].left, 100);
  EXPECT_EQ(layout.buttons[2].Right(), 100 + 3 * 2200 + 2 * 200);
  EXPECT_EQ(layout.form_width, layout.buttons[2].Right() + 100 + 100);
  EXPECT_EQ(layout.message.Right(), layout.form_width - 250);
}

TEST(MessageBoxLayout, GoesOnInFurtherRowsWhereTheScreenIsTooNarrow) {
  const MessageBoxLayout layout = LayOut(std::vector<int>(10, 3800), 100);  // four have room

  ASSERT_EQ(layout.buttons.size(), 10u);
  EXPECT_LE(layout.form_width, 20'000);
  EXPECT_EQ(layout.buttons[4].left, layout.buttons[0].left);
  EXPECT_GT(layout.buttons[4].top, layout.buttons[3].Bottom());
  EXPECT_EQ(layout.buttons[9].left, layout.buttons[1].left);
  EXPECT_EQ(layout.form_height - layout.buttons[9].Bottom(), 2000 - 1600);
  EXPECT_LE(LayOut({50'000}, 100).form_width, 20'000);
}

TEST(MessageBoxLayout, ScrollsAMessageHigherThanTheScreen) {
  const MessageBoxLayout layout = LayOut({300}, 40'000);

  EXPECT_TRUE(layout.scrolls);
  EXPECT_EQ(layout.form_height, 15'000);
  EXPECT_EQ(layout.buttons[0].Bottom() + 450, 15'000);
  EXPECT_EQ(layout.message.Bottom() + 200, layout.buttons[0].top);
  EXPECT_FALSE(LayOut({300}, 13'000).scrolls);
}

TEST(WrappedLines, BreaksBetweenWordsAndWithinTooLongOnes) {
  const struct {
    const wchar_t* text;
    int lines;  // of ten characters
  } cases[] = {{L"", 1},
               {L"0123456789", 1},
               {L"0123456789     ", 1},
               {L"one two three", 2},
               {L"one three six", 2},
               {L"01234567890", 2},
               {L"to 0123456789", 2},
               {L"to 01234567890123456789 go", 4},
               {L"0123456789012345 four", 3}};
  for (const auto& [text, lines] : cases) {
    const std::wstring paragraph(text);
    std::vector<int> ends(paragraph.size());
    std::iota(ends.begin(), ends.end(), 1);
    EXPECT_EQ(WrappedLines(paragraph, ends, 10), lines) << testing::PrintToString(paragraph);
  }
  const int wide[] = {20, 40};
  EXPECT_EQ(WrappedLines(L"WW", wide, 10), 2);
}

}  // namespace
}  // namespace korvex
