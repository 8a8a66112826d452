// Lets the user choose a drive, a folder and files, inside one frame: a drive box over a folder
// list, a splitter, a file list, and a button that browses the network.
//
// Paths are native and UTF-8. Listing errors (68, 70, 75, 76) reach the caller of SetPath; those
// that follow a click are shown.
#pragma once

#include <wx/panel.h>

#include <functional>
#include <string>
#include <vector>

namespace korvex {

class FileChooser : public wxPanel {
 public:
  FileChooser(wxWindow* parent, const std::string& name);

  // The caption of the frame.
  std::string Caption() const;
  void SetCaption(const std::string& caption);

  // Patterns of file names with "*" and "?", several separated by ";". Error 5 for one that no file
  // name can match.
  const std::string& Pattern() const;
  void SetPattern(const std::string& pattern);

  // The frame and everything in it. Not virtual in wx's sense: hides wxWindow's.
  bool Enabled() const;
  void SetEnabled(bool enabled);

  bool MultiSelect() const;
  void SetMultiSelect(bool multi_select);

  // The current folder, without a separator at its end unless it is a root.
  std::string Path() const;
  void SetPath(const std::string& new_path);

  // The selected files in list order: names, or full paths.
  std::vector<std::string> SelFilenames() const;
  std::vector<std::string> SelFullPaths() const;
  int FileCount() const;
  int SelectedCount() const;

  // Looks at the disk again. Folder and selection stay, as far as they still exist.
  void Refresh();

  // Raised when the user double-clicks a file.
  std::function<void()> DblClick;
};

}  // namespace korvex
