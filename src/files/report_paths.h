// Paths as a report tells them: the same wherever the campaign lies, and without the names of users
// that folders carry.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

// The way from the processing folder to a file with "/" between the names: "Set 1/P1-1-1.xls",
// "../results.xls". The file's name alone when it lies on another drive, or in the folders of a
// user in which the processing folder does not lie. `path` is absolute.
std::string PathFrom(const std::string& processing_folder, const std::string& path);

// A text such as the cause of a problem: paths in it begin at the processing folder, and other
// folders of a user's own with "~" instead of his name.
std::string WithoutFolders(const std::string& processing_folder, std::string_view text);

}  // namespace korvex
