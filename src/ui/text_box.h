#pragma once

#include <wx/textctrl.h>

namespace korvex {

// A text box with room for that many ordinary characters. What the platform takes for the height of
// a box is too little for large letters.
wxTextCtrl* NewTextBox(wxWindow& parent, const char* name, int characters);

}  // namespace korvex
