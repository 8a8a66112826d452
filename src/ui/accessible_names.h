// What screen readers say of the windows, beyond the captions that everybody sees.
//
// The first two are implemented for the toolkit of each platform.
#pragma once

#include <wx/window.h>

#include <string>

namespace korvex {

// Gives a control a name. Only for one whose caption, if any, does not say what it is for.
void SetAccessibleName(wxWindow& control, const std::string& name);

// Makes a dialog one that is read out, with this text, when it appears.
void SetAccessibleMessage(wxWindow& dialog, const std::string& text);

// Names all controls of a window that need it, by their own names.
void NameControls(wxWindow& window);

}  // namespace korvex
