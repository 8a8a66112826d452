#pragma once

#include <string_view>

namespace korvex {

// Error 1004 when the name ends like a spreadsheet format other than .xls, the one that is written
// here: a program that trusts the ending could not open the file. Other endings, and none, will do.
void CheckOutputEnding(std::string_view file_name);

}  // namespace korvex
