// What the forms share in building and driving their controls.
#pragma once

#include <wx/colour.h>
#include <wx/iconbndl.h>
#include <wx/string.h>
#include <wx/textctrl.h>
#include <wx/toplevel.h>
#include <wx/window.h>

#include <string>
#include <string_view>

class wxButton;
class wxChoice;
class wxListBox;

namespace korvex {

// Texts on their way to and from the widgets. Bytes that are not UTF-8 (in a file name from another
// system) show as U+FFFD and are lost on the way back: who shows file names keeps the names itself.
wxString ToWx(std::string_view text);
std::string FromWx(const wxString& text);

// Converts between the pixels of one window's screen and twips, the unit in which forms are
// designed: 1440 to an inch of the screen. A user who has asked for larger letters gets larger
// forms, too: what was designed around a line of text keeps fitting it.
class Twips {
 public:
  explicit Twips(const wxWindow& window);

  int ToPixels(int twips) const;
  int FromPixels(int pixels) const;

 private:
  double per_pixel_;
};

// The program's icon for the title bars of its windows, drawn from icons/korvex.svg.
wxIconBundle AppIcons();

// Centres a window on its parent, or else on the screen, when it shows. Not before: some window
// managers get a new window as a dot, and would centre that.
void CentreWhenShown(wxTopLevelWindow& window);

// Enables or disables one control (not what lies inside it) and shades its background: the window
// background when it is enabled, a darker shade when it is not.
void EnableFrame(wxWindow& control, bool enable);

// The shade of a disabled control: `caption`, the text colour of inactive captions, where `text`
// can be read on it, else `face`, that of buttons.
wxColour DisabledShade(const wxColour& caption, const wxColour& text, const wxColour& face);

// A text box with room for that many ordinary characters. What the platform takes for the height of
// a box is too little for large letters.
wxTextCtrl* NewTextBox(wxWindow& parent, const char* name, int characters);

// Under GTK the wheel over a closed box would choose another entry while the user scrolls past it.
void IgnoreWheel(wxChoice& box);

// A double click counts as one click.
void IgnoreSecondClick(wxButton& button);

// Keeps GTK from selecting the first item of a list when the keyboard focus comes to it, and from
// overlooking Shift and Ctrl in the click that brings it. On every platform a click on blank space
// selects nothing.
void SelectOnlyWhenAsked(wxListBox& list);

// Sets a flag for its own lifetime and puts the former value back.
class RaisedFlag {
 public:
  explicit RaisedFlag(bool& flag) : flag_(flag), former_(flag) { flag_ = true; }
  ~RaisedFlag() { flag_ = former_; }
  RaisedFlag(const RaisedFlag&) = delete;
  RaisedFlag& operator=(const RaisedFlag&) = delete;

 private:
  bool& flag_;
  bool former_;
};

}  // namespace korvex
