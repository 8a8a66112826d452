// The folders of one drive as a tree: opened from the root down to the current folder, which is the
// selected item. Other folders are looked into when the user opens them.
//
// Hidden folders are left out unless the way to the current folder leads through them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "ui/native_tree.h"

namespace korvex {

class FolderTree : public NativeTree {
 public:
  FolderTree(wxWindow* parent, const std::string& name);

  // The drive, and the selected folder in it; both empty until Open.
  const std::string& Drive() const { return drive_; }
  const std::string& Folder() const { return folder_; }

  // Makes a folder current. `entries` is what it holds, in listing order.
  void Open(const std::string& drive, const std::string& folder,
            const std::vector<FolderEntry>& entries);

  // Shows what has been found in the current folder.
  void ShowEntries(const std::vector<FolderEntry>& entries);

  // Looks again at every open folder but the current one.
  void LookAgain();

  // Scrolls to the current folder and as many of its sub-folders as fit.
  void Reveal();

  // The user has selected another folder.
  std::function<void()> Change;
  // The user has clicked on the folder that is current already.
  std::function<void()> Clicked;
  // A folder that the user has opened cannot be listed; called while the error is the pending one.
  std::function<void()> Failed;

 private:
  class Item;

  void OnSelect(const wxTreeItemId& id) override;
  bool OnOpen(const wxTreeItemId& id) override;
  void OnPress(const wxTreeItemId& id) override;
  Item& ItemOf(const wxTreeItemId& id) const;
  wxTreeItemId Child(const wxTreeItemId& parent, const std::string& name) const;
  std::string NameOnWay(const std::string& folder) const;
  void Fill(const wxTreeItemId& id, const std::vector<FolderEntry>& entries);
  void FillFromDisk(const wxTreeItemId& id);
  void SetSubFolders(const wxTreeItemId& id, const std::vector<std::string>& names);
  void LookAgainBelow(const wxTreeItemId& id);

  std::string drive_;
  std::string folder_;
  bool updating_ = false;
  int height_ = 0;  // for which the current folder has been revealed
};

}  // namespace korvex
