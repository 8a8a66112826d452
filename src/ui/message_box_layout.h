// Where the parts of the program's own message box go: arithmetic in twips, from the form as it is
// designed to the form that holds one message.
//
// A form's width and height count the window's frame in.
#pragma once

#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace korvex {

// What a button is wider than its caption, and what lies below the buttons.
inline constexpr int kCaptionPadding = 200;
inline constexpr int kBelowButtons = 450;

struct TwipBox {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;

  int Right() const { return left + width; }
  int Bottom() const { return top + height; }

  friend bool operator==(const TwipBox&, const TwipBox&) = default;
};

struct MessageBoxDesign {
  int form_width = 0;
  int form_height = 0;
  TwipBox first_button;
  int message_left = 0;  // right of an icon
  int message_top = 0;
};

struct MessageBoxContent {
  std::vector<int> caption_widths;  // left to right; at least one
  bool has_icon = false;
  // The height of the message when it wraps at a width.
  std::function<int(int width)> message_height;
  // What the screen has room for.
  int most_width = 0;
  int most_height = 0;
};

struct MessageBoxLayout {
  int form_width = 0;
  int form_height = 0;
  TwipBox message;
  bool scrolls = false;  // the message is higher than its place
  std::vector<TwipBox> buttons;
};

// The form grows with its message and its buttons and never shrinks. Buttons for which the screen
// is not wide enough go on in further rows; a message for which it is not high enough scrolls.
MessageBoxLayout LayOutMessageBox(const MessageBoxDesign& design, const MessageBoxContent& content);

// The number of lines that a paragraph fills when it wraps between words, and within those that are
// wider than a line. `ends` says for each character where it ends in the unwrapped paragraph.
int WrappedLines(std::wstring_view paragraph, std::span<const int> ends, int width);

}  // namespace korvex
