#pragma once

#include <string>

namespace korvex {

// The user's own folder for what the program keeps besides settings: "%LOCALAPPDATA%\KORVEX". Need
// not exist; empty when the user has none.
std::string UserFolder();

}  // namespace korvex
