#pragma once

#include <wx/window.h>

namespace korvex {

// Enables or disables one control (not what lies inside it) and shades its background: the window
// background when it is enabled, a darker shade when it is not.
void EnableFrame(wxWindow& control, bool enable);

}  // namespace korvex
