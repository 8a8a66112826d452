// What happens to a control without anybody meaning it.
#pragma once

class wxButton;
class wxChoice;
class wxListBox;

namespace korvex {

// Under GTK the wheel over a closed box would choose without a click: whoever scrolls past it wants
// something else.
void IgnoreWheel(wxChoice& box);

// Of a double click the button hears the first click alone.
void IgnoreSecondClick(wxButton& button);

// A list in which nothing is selected stays so when the focus comes to it by the keyboard; GTK
// would select its first item.
void SelectOnlyWhenAsked(wxListBox& list);

}  // namespace korvex
