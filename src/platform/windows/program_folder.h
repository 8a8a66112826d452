#pragma once

#include <string>

namespace korvex {

// The folder of the running executable, without trailing separator.
std::string ProgramFolder();

}  // namespace korvex
