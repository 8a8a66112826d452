// Texts on their way to and from the widgets.
#pragma once

#include <wx/string.h>

#include <string>
#include <string_view>

namespace korvex {

// Bytes that are not UTF-8 (in a file name from elsewhere) show as U+FFFD and do not find their way
// back: whoever shows file names keeps the names themselves.
wxString ToWx(std::string_view text);

std::string FromWx(const wxString& text);

}  // namespace korvex
