// Between the UTF-8 of the program and the UTF-16 of the system.
//
// Every text of the system comes back as the same text, even a file name that is no valid UTF-16:
// half of a surrogate pair crosses as the three bytes that UTF-8 would give it. Any other byte that
// is no UTF-8 becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

std::wstring ToWide(std::string_view utf8);
std::string FromWide(std::wstring_view wide);

// In the code page that programs without Unicode have on this machine. A character that it lacks
// becomes one that looks like it, or "?".
std::string ToSystemCodePage(std::string_view utf8);

}  // namespace korvex
