// The folder browser of the platform.
#pragma once

#include <string>

namespace korvex {

// Asks the user for a folder of the file system. Ends in a separator, or is empty after Cancel.
// `owner` is the native handle of the window in front of which the browser stands.
std::string BrowseForFolder(void* owner);

}  // namespace korvex
