#pragma once

#include <string>

#include "platform/posix/posix_file_system.h"

namespace korvex {

// The user's own folder for what the program keeps besides settings: "$XDG_STATE_HOME/korvex", by
// default in ".local/state" of the home folder. Need not exist.
std::string UserFolder(const PosixFileSystem& files);

}  // namespace korvex
