#pragma once

#include <string>
#include <string_view>

namespace korvex {

// A sheet name made of a folder's name: what a sheet name cannot hold (\ / ? * [ ] : , control
// characters and bytes that are no UTF-8 anywhere, an apostrophe at either end) becomes "_", and it
// is cut to 31 UTF-16 units without splitting a character. Empty for the nameless folder at the
// root of a drive.
std::string SheetNameFromFolder(std::string_view folder_name);

}  // namespace korvex
