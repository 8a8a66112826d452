#include "ui/message_box_layout.h"

#include <algorithm>
#include <cstddef>

namespace korvex {
namespace {

constexpr int kButtonGap = 200;
constexpr int kRightOfButtons = 100;
constexpr int kLeftWithoutIcon = 150;
constexpr int kRightOfMessage = 250;
constexpr int kAboveButtons = 200;

// The buttons of one row, and the rows that hold all buttons.
struct Grid {
  int columns;
  int rows;
};

int NeededWidth(const TwipBox& first, int columns) {
  const int last_left = first.left + (columns - 1) * (first.width + kButtonGap);
  return last_left + first.width + first.left + kRightOfButtons;
}

// As many columns as the screen has room for, and then no more than the rows need.
Grid GridOf(const TwipBox& first, int buttons, int most_width) {
  int columns = buttons;
  while (columns > 1 && NeededWidth(first, columns) > most_width) --columns;
  const int rows = (buttons + columns - 1) / columns;
  return {(buttons + rows - 1) / rows, rows};
}

TwipBox ButtonSize(const MessageBoxDesign& design, const MessageBoxContent& content) {
  TwipBox button = design.first_button;
  const int widest = std::ranges::max(content.caption_widths) + kCaptionPadding;
  const int most = content.most_width - 2 * button.left - kRightOfButtons;
  button.width = std::max(button.width, std::min(widest, most));
  return button;
}

void PlaceMessage(const MessageBoxDesign& design, const MessageBoxContent& content,
                  MessageBoxLayout& layout) {
  TwipBox& message = layout.message;
  message.left = content.has_icon ? design.message_left : kLeftWithoutIcon;
  message.top = design.message_top;
  message.width = layout.form_width - message.left - kRightOfMessage;
  message.height = content.message_height(message.width);
}

// Puts `first` below the message, and gives the form the height for everything.
void PlaceBelow(int further_rows, int most_height, MessageBoxLayout& layout, TwipBox& first) {
  const int message_bottom = layout.message.Bottom();
  if (first.top - kAboveButtons < message_bottom) {
    first.top = message_bottom + kAboveButtons;
    layout.form_height = first.Bottom() + kBelowButtons;
  }
  layout.form_height += further_rows;
  // Only the message gives way to the screen: every button must stay in reach.
  const int excess = std::min(layout.form_height - most_height, layout.message.height);
  layout.scrolls = excess > 0;
  if (!layout.scrolls) return;
  layout.form_height -= excess;
  layout.message.height -= excess;
  first.top -= excess;
}

}  // namespace

MessageBoxLayout LayOutMessageBox(const MessageBoxDesign& design,
                                  const MessageBoxContent& content) {
  MessageBoxLayout layout;
  TwipBox first = ButtonSize(design, content);
  const auto count = static_cast<int>(content.caption_widths.size());
  const Grid grid = GridOf(first, count, content.most_width);

  const int needed_width = NeededWidth(first, grid.columns);
  layout.form_width = std::max(design.form_width, needed_width);
  layout.form_height = design.form_height;
  // Centred as long as the form keeps its width; one that grew for its buttons just fits them.
  if (needed_width <= design.form_width) {
    const int span = needed_width - kRightOfButtons - 2 * first.left;
    first.left += (design.form_width - span) / 2 - kRightOfButtons;
  }

  PlaceMessage(design, content, layout);
  const int row_height = first.height + kButtonGap / 2;
  PlaceBelow((grid.rows - 1) * row_height, content.most_height, layout, first);

  for (int i = 0; i < count; ++i) {
    TwipBox button = first;
    button.left += i % grid.columns * (first.width + kButtonGap);
    button.top += i / grid.columns * row_height;
    layout.buttons.push_back(button);
  }
  return layout;
}

int WrappedLines(std::wstring_view paragraph, std::span<const int> ends, int width) {
  const auto start_of = [&](std::size_t i) { return i == 0 ? 0 : ends[i - 1]; };
  int lines = 1;
  std::size_t line = 0;  // first character of the line
  std::size_t word = 0;  // first character of the word
  for (std::size_t i = 0; i < paragraph.size(); ++i) {
    if (paragraph[i] == L' ') {  // may hang over the end of the line
      word = i + 1;
      continue;
    }
    while (i > line && ends[i] - start_of(line) > width) {
      // A word that fills the line alone is broken at this character.
      line = word > line ? word : i;
      ++lines;
    }
  }
  return lines;
}

}  // namespace korvex
