// Lets the user choose a drive, a folder and files, inside one frame: a drive box over a folder
// list, a splitter, a file list, and a button that browses the network.
//
// Paths are native and UTF-8. Listing errors (68, 70, 75, 76) reach the caller of SetPath, and then
// nothing has changed; those that follow a click are shown. The lists follow the disk whenever the
// user comes back to the window, but a slow share seldom: a click on the current folder looks at
// once.
#pragma once

#include <wx/panel.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "ui/file_pattern.h"

class wxActivateEvent;
class wxBoxSizer;
class wxButton;
class wxChoice;
class wxListBox;
class wxMouseEvent;
class wxStaticText;
class wxTextCtrl;

namespace korvex {

class FolderTree;
class FramePanel;
class TrappedError;

class FileChooser : public wxPanel {
 public:
  FileChooser(wxWindow* parent, const std::string& name);

  // The caption of the frame.
  std::string Caption() const;
  void SetCaption(const std::string& caption);

  // Patterns of file names with "*" and "?", several separated by ";". Error 5 for one that no file
  // name can match.
  const std::string& Pattern() const { return pattern_.Text(); }
  void SetPattern(const std::string& pattern);

  // The frame and everything in it.
  bool Enabled() const;
  void SetEnabled(bool enabled);

  bool MultiSelect() const { return multi_select_; }
  void SetMultiSelect(bool multi_select) { multi_select_ = multi_select; }

  // The current folder, without a separator at its end unless it is a root.
  std::string Path() const;
  void SetPath(const std::string& new_path);

  // The selected files in list order: names, or full paths.
  std::vector<std::string> SelFilenames() const;
  std::vector<std::string> SelFullPaths() const;
  int FileCount() const;
  int SelectedCount() const;
  // Selects these files of the list and no others. Returns the names that the list does not show.
  std::vector<std::string> SelectFiles(const std::vector<std::string>& names);

  // A text in the place of the file list while there is nothing to choose; the list when empty.
  void SetNote(const std::string& note);

  // What the current folder held when it was last looked at, hidden entries too, in listing order.
  const std::vector<FolderEntry>& Entries() const { return entries_; }
  // Looks at the disk again. Folder and selection stay, as far as they still exist.
  void LookAgain();
  // Raised after every look at the current folder, which may be another one.
  std::function<void()> Looked;
  // The owner has taken so much longer over what it looked up because of that.
  void AddToLook(std::chrono::steady_clock::duration taken);

  // Shows why a folder could not be opened: as a message about the folder, or else as a report.
  void ShowFailure(const TrappedError& error);
  void FocusOnFolders();

  // Raised when the user double-clicks a file.
  std::function<void()> DblClick;

 private:
  class TimedLook;

  void LayOut();
  void BindEvents();
  void BindSplitter();
  void FitLists();

  void drvMain_Change();
  void dirMain_Change();
  void filMain_Click(int item);
  void filMain_MouseMove(const wxPoint& position);
  void ShowTip(const wxString& tip);
  void PaintSplitter();
  void cmdNetWork_Click();
  void OnActivate(wxActivateEvent& event);

  void Open(const std::string& drive, const std::string& folder);
  void ShowDrives(const std::string& drive);
  void ShowFiles(const std::vector<FolderEntry>& entries);
  void ShowMatchingFiles();
  void ShowCount();
  void ForgetFiles();

  FilePattern pattern_{"*.*"};
  bool multi_select_ = true;
  std::vector<std::string> drives_;  // in the order of the drive box
  std::vector<FolderEntry> entries_;
  std::vector<std::string> files_;  // in the order of the file list
  std::chrono::steady_clock::duration look_took_{};
  std::chrono::steady_clock::time_point next_look_;  // the lists do not look by themselves before
  int splitter_left_;                                // where the user has put it, in twips
  std::optional<int> drag_start_;  // while the splitter is dragged: the pointer within it

  FramePanel* fraMain_;
  wxChoice* drvMain_;
  FolderTree* dirMain_;
  wxWindow* Splitter_;
  wxListBox* filMain_;
  wxPanel* fraNote_;  // in the place of the file list
  wxTextCtrl* txtNote_;
  wxButton* cmdNetWork_;
  wxStaticText* lblSelected_;
  wxBoxSizer* left_column_;
};

}  // namespace korvex
