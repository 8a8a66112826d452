#include "files/report_paths.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "files/folder_listing.h"
#include "files/folder_paths.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"

namespace korvex {
namespace {

// Where systems keep the folders of their users.
constexpr std::string_view kHomes[] = {"home", "Users"};
// What can stand beside a path in a sentence.
constexpr std::string_view kAroundPaths = "\"',:;() \r\n";

std::string RootOf(const std::string& path) {
  const FileSystem& files = *Platform().files;
  return files.DriveName(path) + files.Separator();
}

bool IsHomes(const std::string& name) {
  return ContainsText(kHomes, name);
}

bool IsPathStart(std::string_view text, std::size_t at) {
  return at == 0 || kAroundPaths.find(text[at - 1]) != std::string_view::npos;
}

bool IsPathEnd(std::string_view text, std::size_t at) {
  return at == text.size() || kAroundPaths.find(text[at]) != std::string_view::npos;
}

// `folder` has no separator at its end.
void HideFolder(const std::string& folder, std::string& text) {
  std::size_t at = 0;
  while ((at = text.find(folder, at)) != std::string::npos) {
    const std::size_t end = at + folder.size();
    const bool is_above = end < text.size() && text[end] == Platform().files->Separator();
    if (!IsPathStart(text, at) || !(is_above || IsPathEnd(text, end))) {
      at = end;  // another folder, whose name only holds this one
    } else if (is_above) {
      text.erase(at, folder.size() + 1);
    } else {
      text.replace(at, folder.size(), ".");
    }
  }
}

// Replaces the folders of users by "~", from the root or the drive on: "/home/NAME". A name may
// hold blanks where something follows below it.
void HideUsers(std::string_view homes, std::string& text) {
  const char separator = Platform().files->Separator();
  const std::string home = separator + std::string(homes) + separator;
  const auto is_same = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
  std::size_t at = 0;
  for (;;) {
    const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(),
                                   home.begin(), home.end(), is_same);
    if (found == text.end()) return;
    at = static_cast<std::size_t>(found - text.begin());
    const std::size_t name = at + home.size();
    if (separator == '/' && !IsPathStart(text, at)) {
      at = name;
      continue;
    }
    std::size_t end = text.find_first_of(std::string("\"':;\r\n") + separator, name);
    if (end == std::string::npos || text[end] != separator) {
      end = std::min(text.find_first_of(kAroundPaths, name), text.size());
    }
    if (separator == '\\' && at >= 2 && text[at - 1] == ':') at -= 2;
    text.replace(at, end - at, "~");
    ++at;
  }
}

}  // namespace

std::string PathFrom(const std::string& processing_folder, const std::string& path) {
  const std::string root = RootOf(path);
  const std::vector<std::string> way = NamesBelow(root, path);
  if (way.empty()) return path;
  if (processing_folder.empty() || !IsSameName(root, RootOf(processing_folder))) return way.back();
  const std::vector<std::string> from = NamesBelow(root, processing_folder);
  const auto parting = std::ranges::mismatch(from, way, IsSameName);
  if (way.size() > 2 && IsHomes(way.front()) && parting.in2 - way.begin() < 2) return way.back();

  std::vector<std::string> names(static_cast<std::size_t>(from.end() - parting.in1), "..");
  names.insert(names.end(), parting.in2, way.end());
  return Join(names, "/");
}

std::string WithoutFolders(const std::string& processing_folder, std::string_view text) {
  std::string shown(text);
  const char separator = Platform().files->Separator();
  std::string folder = processing_folder;
  while (folder.ends_with(separator)) folder.pop_back();
  if (!NamesBelow(RootOf(folder), folder).empty()) HideFolder(folder, shown);
  for (const std::string_view homes : kHomes) HideUsers(homes, shown);
  return shown;
}

}  // namespace korvex
