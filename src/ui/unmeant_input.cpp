#include "ui/unmeant_input.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/listbox.h>
#include <wx/platinfo.h>
#include <wx/utils.h>

#include <memory>
#include <utility>

namespace korvex {

void IgnoreWheel(wxChoice& box) {
  // Elsewhere the box hears the wheel for its open list, too.
  if (wxPlatformInfo::Get().GetPortId() != wxPORT_GTK) return;
  box.Bind(wxEVT_MOUSEWHEEL, [](wxMouseEvent&) {});
}

void IgnoreSecondClick(wxButton& button) {
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
  list.Bind(wxEVT_SET_FOCUS, [&list](wxFocusEvent& event) {
    event.Skip();
    const bool is_clicked = wxGetMouseState().LeftIsDown();
    if (is_clicked || list.GetSelection() != wxNOT_FOUND) return;
    list.CallAfter([&list] { list.SetSelection(wxNOT_FOUND); });
  });
}

}  // namespace korvex
