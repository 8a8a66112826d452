#pragma once

#include <string>

namespace korvex {

// The folder of the running executable, without trailing separator; links are followed.
std::string ProgramFolder();

}  // namespace korvex
