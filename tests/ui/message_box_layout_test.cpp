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

TEST(MessageBoxLayout, GrowsWithTheMessageAndTheButtonsAndNeverShrinks) {
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
    const MessageBoxLayout layout = LayOut(c.captions, c.message_height, c.has_icon);
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
