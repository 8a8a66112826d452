// What a run would read of a processing folder, in words for the user. Counted one sub-folder at a
// time, so that a window can count between two events. No widgets.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "files/folder_listing.h"
#include "platform/file_system.h"

namespace korvex {

class FolderContents {
 public:
  // Starts to count. `entries` is what the folder holds.
  void Start(const std::string& folder, const std::vector<FolderEntry>& entries);
  // Lists the next sub-folder. The count is given up when it cannot be listed, or only slowly:
  // it is not worth holding anybody up.
  void Step();
  bool IsDone() const { return given_up_ || next_ == sub_folders_.size(); }

  // "3 sub-folders, 15 files: all will be read", and which folders inside them will not. Without
  // the files until they are counted.
  std::string Text() const;

 private:
  std::string folder_;
  std::vector<std::string> sub_folders_;
  std::size_t next_ = 0;  // of them
  std::size_t files_ = 0;
  std::vector<std::string> skipped_;  // folders inside the sub-folders, by sub-folder and name
  bool given_up_ = false;
};

}  // namespace korvex
