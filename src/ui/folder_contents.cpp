#include "ui/folder_contents.h"

#include <algorithm>
#include <chrono>

#include "platform/error.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "text/text.h"

namespace korvex {
namespace {

// A window that stands still for longer feels stuck.
constexpr std::chrono::milliseconds kSlowListing{150};
constexpr std::size_t kMostNames = 5;

std::string Counted(std::size_t count, const char* what) {
  return GroupedDigits(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

void FolderContents::Start(const std::string& folder, const std::vector<FolderEntry>& entries) {
  *this = FolderContents();
  folder_ = folder;
  for (const FolderEntry& entry : entries) {
    if (entry.is_folder) sub_folders_.push_back(entry.name);
  }
}

void FolderContents::Step() {
  const std::string& name = sub_folders_[next_++];
  const auto start = std::chrono::steady_clock::now();
  given_up_ = !Attempt([&] {
    ListedFolders listed;  // lists it once, for both questions
    const std::string sub_folder = JoinPath(folder_, name);
    const std::vector<std::string> read = listed.Workbooks(sub_folder);
    files_ += read.size();
    for (const std::string& inner : listed.SubFolders(sub_folder)) {
      // A folder that is named like a workbook is refused, not skipped.
      if (std::find(read.begin(), read.end(), inner) == read.end())
        skipped_.push_back(JoinPath(name, inner));
    }
  });
  if (std::chrono::steady_clock::now() - start > kSlowListing && !IsDone()) given_up_ = true;
}

std::string FolderContents::Text() const {
  if (sub_folders_.empty()) {
    return "There are no sub-folders here. Choose the folder above, or process selected files.";
  }
  const std::string sub_folders = Counted(sub_folders_.size(), "sub-folder");
  if (given_up_) return sub_folders + ": all files in them will be read";
  if (!IsDone()) return sub_folders;
  std::string text = sub_folders + ", " + Counted(files_, "file") + ": all will be read";
  if (skipped_.empty()) return text;
  text += "\n\nFolders inside them will be skipped: ";
  const std::size_t named = std::min(skipped_.size(), kMostNames);
  for (std::size_t i = 0; i < named; ++i) text += (i > 0 ? ", " : "") + Shown(skipped_[i]);
  if (named < skipped_.size()) text += " and " + GroupedDigits(skipped_.size() - named) + " more";
  return text;
}

}  // namespace korvex
