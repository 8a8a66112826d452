// Splits paths and finds files. Paths are native: the separator is the file system's, "\" or "/".
// Without state: one shared instance (`SharedFileSys`) serves the whole program.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

class clsFileSys {
 public:
  // Searches the folder and everything below it, depth first and in listing order, for a file of
  // that name in any letter case. The result ends in the name as the caller spells it; empty when
  // there is none. Folders that cannot be listed are passed over. Appends the separator that
  // `folder` lacks in the caller's variable. `with_do_events` handles the user's input after every
  // entry.
  std::string FindFile(std::string& folder, const std::string& filename, bool with_do_events) const;

  // Asks the user for a folder. Ends in a separator, or is empty after Cancel.
  std::string BrowseFolder(void* owner_form) const;

  // What follows the last dot of the whole text, the dot included when `with_dot`; empty when that
  // is more than `extn_maxlen` characters. An empty extension with its dot is ".".
  std::string GetFileExtention(std::string_view filename, bool with_dot, int extn_maxlen) const;

  // What follows the last separator.
  std::string GetFileTitle(std::string_view path, bool drop_file_name_extention) const;

  // What comes before the last separator, the separator included when `with_slash`; empty without
  // any separator.
  std::string GetFilePath(std::string_view path, bool with_slash) const;

  // The path without the extension of its file name; a dot in a folder name does not count.
  std::string DropExtention(std::string_view path) const;

  // Opens a document with its associated program.
  void OpenFile(const std::string& file) const;
};

}  // namespace korvex
