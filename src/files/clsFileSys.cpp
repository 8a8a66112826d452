#include "files/clsFileSys.h"

#include <algorithm>
#include <cstddef>
#include <exception>

#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"

namespace korvex {
namespace {

// Bytes that continue a character of UTF-8 are not counted.
std::ptrdiff_t CharacterCount(std::string_view text) {
  return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
}

}  // namespace

std::string clsFileSys::FindFile(std::string& folder, const std::string& filename,
                                 bool with_do_events) const {
  folder = WithSeparator(std::move(folder));
  std::vector<FolderEntry> entries;
  Attempt([&] { entries = SortedEntries(folder); });  // a folder that cannot be listed has none
  for (const FolderEntry& entry : entries) {
    // A link to a folder could lead back to where it stands, and the search would never end.
    if (entry.is_folder && !entry.is_link) {
      std::string sub_folder = folder + entry.name;
      std::string found = FindFile(sub_folder, filename, with_do_events);
      if (!found.empty()) return found;
    } else if (!entry.is_folder && EqualText(entry.name, filename)) {
      return folder + filename;
    }
    if (with_do_events) Platform().message_loop->Yield();
  }
  return "";
}

std::string clsFileSys::BrowseFolder(void* owner_form) const {
  return BrowseForFolder(owner_form);
}

std::string clsFileSys::GetFileExtention(std::string_view filename, bool with_dot,
                                         int extn_maxlen) const {
  std::string_view extension;
  const std::size_t dot = filename.rfind('.');
  // What is longer belongs to the name: "P1-1-1.second reading".
  if (dot != std::string_view::npos && CharacterCount(filename.substr(dot + 1)) <= extn_maxlen)
    extension = filename.substr(with_dot ? dot : dot + 1);
  if (extension.empty() && with_dot) return ".";
  return std::string(extension);
}

std::string clsFileSys::GetFileTitle(std::string_view path, bool drop_file_name_extention) const {
  try {
    const std::size_t last = path.rfind(Platform().files->Separator());
    const std::string_view title = last == std::string_view::npos ? path : path.substr(last + 1);
    return drop_file_name_extention ? DropExtention(title) : std::string(title);
  } catch (const std::exception&) {  // the callers expect a name or none, never an error
    return "";
  }
}

std::string clsFileSys::GetFilePath(std::string_view path, bool with_slash) const {
  const std::size_t last = path.rfind(Platform().files->Separator());
  if (last == std::string_view::npos) return "";
  return std::string(path.substr(0, with_slash ? last + 1 : last));
}

std::string clsFileSys::DropExtention(std::string_view path) const {
  // The dot is looked for in the title alone: folders have dots, too.
  const std::string title = GetFileTitle(path, false);
  const std::size_t dot = title.rfind('.');
  if (dot == std::string::npos) return std::string(path);
  return GetFilePath(path, true) + title.substr(0, dot);
}

void clsFileSys::OpenFile(const std::string& file) const {
  ShellOpen(file);
}

}  // namespace korvex
