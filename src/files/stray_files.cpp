#include "files/stray_files.h"

#include <string_view>
#include <utility>

#include "files/basGeneral.h"
#include "text/text.h"

namespace korvex {
namespace {

// The name of the workbook that such a file belongs to; empty for another name.
std::string OwnerOf(std::string_view name, std::string_view start, std::string_view end) {
  if (name.size() <= start.size() + end.size()) return {};
  if (!name.starts_with(start) || !name.ends_with(end)) return {};
  return std::string(name.substr(start.size(), name.size() - start.size() - end.size()));
}

}  // namespace

std::string StrayFileText(const std::string& path) {
  const std::string name = SharedFileSys().GetFileTitle(path, false);
  const std::string what = path + " is not a workbook: ";
  for (const auto& [start, end] : {std::pair("~$", ""), std::pair(".~lock.", "#")}) {
    const std::string workbook = OwnerOf(name, start, end);
    if (workbook.empty()) continue;
    return what + "it says that " + workbook +
           " is open in a spreadsheet application, here or on another computer. Close the workbook "
           "there and start again. If it is open nowhere, delete this file.";
  }
  constexpr std::string_view kDelete = ", hidden from view. Delete it and start again.";
  const std::string noted = OwnerOf(name, "._", "");
  if (!noted.empty())
    return what + "macOS keeps in it what it notes about " + noted + kDelete.data();
  const struct {
    const char* name;
    const char* use;
  } kOfFolders[] = {
      {"Thumbs.db", "Windows keeps small pictures of the folder's files in it"},
      {"desktop.ini", "Windows keeps the look of the folder in it"},
      {".DS_Store", "macOS keeps the look of the folder in it"},
      {".directory", "the file manager keeps the look of the folder in it"},
  };
  for (const auto& known : kOfFolders) {
    if (EqualText(name, known.name)) return what + known.use + kDelete.data();
  }
  return {};
}

}  // namespace korvex
