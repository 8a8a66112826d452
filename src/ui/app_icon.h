#pragma once

#include <wx/iconbndl.h>

namespace korvex {

// The program's icon for the title bars of its windows, 16 to 128 pixels wide: the picture of
// icons/korvex.svg, drawn here because not every platform's wx can read a picture file.
wxIconBundle AppIcons();

}  // namespace korvex
