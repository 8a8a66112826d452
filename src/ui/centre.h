#pragma once

#include <wx/toplevel.h>

namespace korvex {

// Puts a window in the middle of its parent, or else of the screen, when it shows. Not before: some
// window managers get a new window as a dot, and would put that in the place.
void CentreWhenShown(wxTopLevelWindow& window);

}  // namespace korvex
