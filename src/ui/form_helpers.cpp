#include "ui/form_helpers.h"

#include <wx/bmpbndl.h>
#include <wx/button.h>
#include <wx/choice.h>
#include <wx/listbox.h>
#include <wx/platinfo.h>
#include <wx/settings.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "text/utf8.h"
#include "ui/late_bound.h"

namespace korvex {

extern const char kAppIconSvg[];  // icons/korvex.svg, by src/CMakeLists.txt

namespace {

constexpr double kTwipsPerInch = 1440;
// The height of a line in an ordinary desktop font, 17 pixels at 96 to the inch.
constexpr double kUsualLineInches = 17.0 / 96.0;

constexpr int kAroundText = 8;  // device independent pixels, above and below together

}  // namespace

wxString ToWx(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character character = FirstUtf8(text);
    AppendUtf8(character.code == kInvalidByte ? kReplacementCharacter : character.code, shown);
    text.remove_prefix(character.length);
  }
  return wxString::FromUTF8(shown.data(), shown.size());
}

std::string FromWx(const wxString& text) {
  const wxScopedCharBuffer bytes = text.utf8_str();
  return std::string(bytes.data(), bytes.length());
}

Twips::Twips(const wxWindow& window) {
  const double pixels_per_inch = window.GetDPI().GetHeight() / window.GetContentScaleFactor();
  const double letters = window.GetCharHeight() / (kUsualLineInches * pixels_per_inch);
  per_pixel_ = kTwipsPerInch / (pixels_per_inch * std::max(1.0, letters));
}

int Twips::ToPixels(int twips) const {
  return static_cast<int>(std::lround(twips / per_pixel_));
}

int Twips::FromPixels(int pixels) const {
  return static_cast<int>(std::lround(pixels * per_pixel_));
}

wxIconBundle AppIcons() {
  constexpr int kSide = 64;  // of the picture as designed
  const auto picture = wxBitmapBundle::FromSVG(kAppIconSvg, wxSize(kSide, kSide));
  wxIconBundle icons;
  // Title bars, task bars and window lists each take the size that fits them.
  for (const int size : {16, 24, 32, 48, 64, 128}) {
    icons.AddIcon(picture.GetIcon(wxSize(size, size)));
  }
  return icons;
}

void CentreWhenShown(wxTopLevelWindow& window) {
  window.Bind(wxEVT_SHOW, [&window, size = window.GetSize()](wxShowEvent& event) {
    event.Skip();
    if (!event.IsShown()) return;
    window.SetSize(size);
    window.CentreOnParent();
  });
}

// Forms shade with the text colour of inactive captions, which once was a light grey. Windows 10
// and 11 and many themes of GTK have it black, which would hide the text: there it is the face of
// buttons.
wxColour DisabledShade(const wxColour& caption, const wxColour& text, const wxColour& face) {
  constexpr double kReadable = 0.4;  // least difference of luminance
  const bool is_readable = std::abs(caption.GetLuminance() - text.GetLuminance()) >= kReadable;
  return is_readable ? caption : face;
}

void EnableFrame(wxWindow& control, bool enable) {
  const auto colour = [](wxSystemColour name) { return wxSystemSettings::GetColour(name); };
  const wxColour face = colour(wxSYS_COLOUR_BTNFACE);
  // The themes of GTK have no colour of that meaning.
  const bool has_caption = wxPlatformInfo::Get().GetPortId() != wxPORT_GTK;
  const wxColour caption = has_caption ? colour(wxSYS_COLOUR_INACTIVECAPTIONTEXT) : face;
  control.SetBackgroundColour(enable
                                  ? colour(wxSYS_COLOUR_WINDOW)
                                  : DisabledShade(caption, colour(wxSYS_COLOUR_WINDOWTEXT), face));
  late_bound::SetEnabled(control, enable);
  control.Refresh();
}

wxTextCtrl* NewTextBox(wxWindow& parent, const char* name, int characters) {
  auto* box = new wxTextCtrl(&parent, wxID_ANY);
  box->SetName(name);
  const int height = box->GetCharHeight() + box->FromDIP(kAroundText);
  box->SetMinSize(
      wxSize(characters * box->GetCharWidth(), std::max(height, box->GetBestSize().GetHeight())));
  return box;
}

void IgnoreWheel(wxChoice& box) {
  // Elsewhere the open list of the box gets its wheel events here, too.
  if (wxPlatformInfo::Get().GetPortId() != wxPORT_GTK) return;
  box.Bind(wxEVT_MOUSEWHEEL, [](wxMouseEvent&) {});
}

void IgnoreSecondClick(wxButton& button) {
  // A double click is reported as a press of its own, and each press is followed by a button event:
  // the flag marks the event that is one too many.
  const auto is_second = std::make_shared<bool>(false);
  const auto press = [is_second](wxMouseEvent& event) {
    *is_second = event.LeftDClick();
    event.Skip();
  };
  button.Bind(wxEVT_LEFT_DOWN, press);
  button.Bind(wxEVT_LEFT_DCLICK, press);
  button.Bind(wxEVT_BUTTON, [is_second](wxCommandEvent& event) {
    if (!std::exchange(*is_second, false)) event.Skip();
  });
}

void SelectOnlyWhenAsked(wxListBox& list) {
  const auto is_clicked = std::make_shared<bool>(false);
  const auto press = [&list, is_clicked](wxMouseEvent& event) {
    *is_clicked = true;
    // First, since GTK selects an item with it.
    if (!list.HasFocus()) list.SetFocus();
    if (list.HitTest(event.GetPosition()) == wxNOT_FOUND) {
      list.SetSelection(wxNOT_FOUND);
    } else {
      event.Skip();
    }
  };
  list.Bind(wxEVT_LEFT_DOWN, press);
  list.Bind(wxEVT_LEFT_DCLICK, press);
  list.Bind(wxEVT_LEFT_UP, [is_clicked](wxMouseEvent& event) {
    *is_clicked = false;
    event.Skip();
  });
  list.Bind(wxEVT_SET_FOCUS, [&list, is_clicked](wxFocusEvent& event) {
    event.Skip();
    wxArrayInt selected;
    if (*is_clicked || list.GetSelections(selected) > 0) return;
    // GTK selects once this event has been handled.
    list.CallAfter([&list] { list.SetSelection(wxNOT_FOUND); });
  });
}

}  // namespace korvex
