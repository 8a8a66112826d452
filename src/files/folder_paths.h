// Where a folder lies among the drives and below another folder. Paths are absolute, in the style
// of the file system; only a drive's root may end in a separator.
#pragma once

#include <string>
#include <vector>

namespace korvex {

// Whether two names mean the same entry of a folder.
bool IsSameName(const std::string& a, const std::string& b);

// The drive that a folder lies on: the longest of `drives` above it, or else what the path itself
// begins with, the share of a network folder ("\\server\share").
std::string DriveOf(const std::string& folder, const std::vector<std::string>& drives);

// The names on the way from a folder down to another that lies in it; none when it does not.
std::vector<std::string> NamesBelow(const std::string& folder, const std::string& inner);

// The folder itself while it exists, or the nearest one above it that does; the default folder when
// the whole drive has gone.
std::string NearestExistingFolder(std::string folder);

}  // namespace korvex
