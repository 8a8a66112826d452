#include "ui/EnableFrame.h"

#include <wx/platinfo.h>
#include <wx/settings.h>

#include "ui/late_bound.h"

namespace korvex {
namespace {

// Under GTK the text colour of an inactive caption is nearly black in many themes: nothing to put
// behind a text.
wxSystemColour DisabledShade() {
  return wxPlatformInfo::Get().GetPortId() == wxPORT_GTK ? wxSYS_COLOUR_BTNFACE
                                                         : wxSYS_COLOUR_INACTIVECAPTIONTEXT;
}

}  // namespace

void EnableFrame(wxWindow& control, bool enable) {
  control.SetBackgroundColour(
      wxSystemSettings::GetColour(enable ? wxSYS_COLOUR_WINDOW : DisabledShade()));
  late_bound::SetEnabled(control, enable);
  control.Refresh();
}

}  // namespace korvex
