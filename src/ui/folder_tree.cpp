#include "ui/folder_tree.h"

#include <wx/utils.h>
#include <wx/wupdlock.h>

#include <set>
#include <utility>

#include "files/folder_listing.h"
#include "files/folder_paths.h"
#include "platform/error.h"
#include "ui/form_helpers.h"

namespace korvex {

// What the tree knows of a folder. `names` are the sub-folders that it shows, once it has looked.
class FolderTree::Item : public wxTreeItemData {
 public:
  Item(std::string item_path, std::string item_name)
      : path(std::move(item_path)), name(std::move(item_name)) {}

  const std::string path;
  const std::string name;
  std::vector<std::string> names;
};

FolderTree::FolderTree(wxWindow* parent, const std::string& name) : NativeTree(parent, name) {
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    const int height = event.GetSize().y;
    if (height != std::exchange(height_, height)) CallAfter([this] { Reveal(); });
  });
}

void FolderTree::Open(const std::string& drive, const std::string& folder,
                      const std::vector<FolderEntry>& entries) {
  const RaisedFlag updating(updating_);
  const wxWindowUpdateLocker no_flicker(this);
  folder_ = folder;
  if (drive != drive_ || !GetRootItem().IsOk()) {
    DeleteAllItems();
    drive_ = drive;
    AddRoot(ToWx(drive), new Item(drive, drive));
  }
  wxTreeItemId id = GetRootItem();
  for (const std::string& name : NamesBelow(drive, folder)) {
    // Each folder on the way is filled, so that the user sees what lies beside it.
    FillFromDisk(id);
    // A folder can be open and yet be missing from the listing of its parent (hidden, or deleted).
    if (!Child(id, name).IsOk()) SetSubFolders(id, {name});
    Expand(id);
    id = Child(id, name);
  }
  folder_ = ItemOf(id).path;  // as the disk spells it
  Fill(id, entries);
  Expand(id);
  SelectItem(id);
  Reveal();
  CallAfter(
      [this] { Reveal(); });  // in a window that is only just being shown, nothing has scrolled
}

// Repeated when the size changes, since a window may be shown before it has its final size.
void FolderTree::Reveal() {
  if (GetSelection().IsOk()) ScrollTo(GetSelection());
}

void FolderTree::ShowEntries(const std::vector<FolderEntry>& entries) {
  const RaisedFlag updating(updating_);
  if (GetSelection().IsOk()) Fill(GetSelection(), entries);
}

void FolderTree::LookAgain() {
  const RaisedFlag updating(updating_);
  LookAgainBelow(GetRootItem());
}

void FolderTree::LookAgainBelow(const wxTreeItemId& id) {
  if (!id.IsOk() || !IsExpanded(id)) return;
  // The owner has listed the current folder itself and shows its files from that list.
  if (id != GetSelection()) FillFromDisk(id);
  for (wxTreeItemId child = GetFirstChild(id); child.IsOk(); child = GetNextSibling(child))
    LookAgainBelow(child);
}

void FolderTree::OnSelect(const wxTreeItemId& id) {
  // What the tree selects by itself is no choice of the user, nor is what is selected already.
  if (updating_ || ItemOf(id).path == folder_) return;
  folder_ = ItemOf(id).path;
  if (Change) Change();
}

bool FolderTree::OnOpen(const wxTreeItemId& id) {
  if (updating_) return true;
  const RaisedFlag updating(updating_);
  const wxBusyCursor busy;
  try {
    Fill(id, SortedEntries(ItemOf(id).path));
  } catch (...) {
    if (Failed) Failed();
  }
  // Nothing to open: the item stays closed and loses its arrow.
  return !ItemOf(id).names.empty();
}

void FolderTree::OnPress(const wxTreeItemId& id) {
  if (id != GetSelection()) return;
  // Once the tree has handled the click itself: a look may take folders away.
  CallAfter([this] {
    if (Clicked) Clicked();
  });
}

FolderTree::Item& FolderTree::ItemOf(const wxTreeItemId& id) const {
  return static_cast<Item&>(*GetItemData(id));
}

wxTreeItemId FolderTree::Child(const wxTreeItemId& parent, const std::string& name) const {
  wxTreeItemId child = GetFirstChild(parent);
  while (child.IsOk() && !IsSameName(ItemOf(child).name, name)) child = GetNextSibling(child);
  return child;
}

// The sub-folder of `folder` that holds the current folder; empty when none does.
std::string FolderTree::NameOnWay(const std::string& folder) const {
  const std::vector<std::string> names = NamesBelow(folder, folder_);
  return names.empty() ? std::string() : names.front();
}

void FolderTree::Fill(const wxTreeItemId& id, const std::vector<FolderEntry>& entries) {
  const std::string on_way = NameOnWay(ItemOf(id).path);
  std::vector<std::string> names;
  for (const FolderEntry& entry : entries) {
    if (entry.is_folder && (!entry.is_hidden || IsSameName(entry.name, on_way)))
      names.push_back(entry.name);
  }
  SetSubFolders(id, names);
}

// In a folder that cannot be listed only the sub-folder that leads to the current one is shown.
void FolderTree::FillFromDisk(const wxTreeItemId& id) {
  const std::string path = ItemOf(id).path;
  if (Attempt([&] { Fill(id, SortedEntries(path)); })) return;
  const std::string on_way = NameOnWay(path);
  SetSubFolders(id, on_way.empty() ? std::vector<std::string>() : std::vector{on_way});
}

// Both the names and the items are in listing order. Items that stay keep what is open below them.
void FolderTree::SetSubFolders(const wxTreeItemId& id, const std::vector<std::string>& names) {
  Item& folder = ItemOf(id);
  if (names.empty()) SetItemHasChildren(id, false);
  if (names == folder.names) return;
  const wxWindowUpdateLocker no_flicker(this);
  const std::set<std::string> wanted(names.begin(), names.end());
  wxTreeItemId old = GetLastChild(id);
  wxTreeItemId next;
  const auto drop_old = [&] {
    const wxTreeItemId gone = old;
    old = GetPrevSibling(old);
    Delete(gone);
  };
  // Backwards, because GTK counts the items before a new one: thousands would take seconds.
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    while (old.IsOk() && !wanted.contains(ItemOf(old).name)) drop_old();
    if (old.IsOk() && ItemOf(old).name == *name) {
      next = old;
      old = GetPrevSibling(old);
      continue;
    }
    next = InsertItem(id, next, ToWx(*name), new Item(JoinPath(folder.path, *name), *name));
    // Every folder gets an arrow: only opening it tells whether there are folders in it.
    SetItemHasChildren(next, true);
  }
  while (old.IsOk()) drop_old();
  folder.names = names;
}

}  // namespace korvex
