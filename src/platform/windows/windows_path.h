// Paths as Windows takes them.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

// "C:" or "\\server\share"; empty for a path that begins with neither. "/" counts as "\".
std::wstring DriveOf(std::wstring_view path);

// Starts at a drive or share, with "\" alone, without "." and "..", and without a separator at the
// end except that of a root. "C:" is the root of its drive, "C:x" lies in the drive's current
// folder. Nothing needs to exist. A "\\?\" or "\\.\" is taken off a drive or share; what it
// names else (a volume without a letter) counts as a share.
std::wstring AbsoluteWide(std::string_view path);

// What to hand to the system for a path: long ones, and names that it would change by taking dots
// or blanks off their ends, get "\\?\". Empty for an empty path.
std::wstring SystemPath(std::string_view path);

// The folder that holds the last component of an absolute path; a root for what is right below it.
std::wstring FolderOf(const std::wstring& absolute);

}  // namespace korvex
