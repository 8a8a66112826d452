// UTF-8 to the UTF-16 of the file formats. Bytes that are no UTF-8 become U+FFFD each.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

// Replaces the content of `out`, reusing its memory.
void ToUtf16(std::string_view utf8, std::u16string& out);

}  // namespace korvex
