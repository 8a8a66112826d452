#include "ui/folder_tree.h"

#include <wx/artprov.h>
#include <wx/utils.h>
#include <wx/wupdlock.h>

#include <initializer_list>
#include <set>
#include <utility>

#include "files/folder_listing.h"
#include "files/folder_paths.h"
#include "platform/error.h"
#include "ui/form_helpers.h"

namespace korvex {
namespace {

enum Image { kDriveImage, kFolderImage, kOpenFolderImage };

wxVector<wxBitmapBundle> SmallIcons() {
  wxVector<wxBitmapBundle> images;
  for (const wxArtID& id :
       std::initializer_list<wxArtID>{wxART_HARDDISK, wxART_FOLDER, wxART_FOLDER_OPEN})
    images.push_back(wxArtProvider::GetBitmapBundle(id, wxART_LIST, wxSize(16, 16)));
  return images;
}

}  // namespace

// What the tree knows of a folder. `names` are the sub-folders that it shows, once it has looked.
class FolderTree::Item : public wxTreeItemData {
 public:
  Item(std::string item_path, std::string item_name)
      : path(std::move(item_path)), name(std::move(item_name)) {}

  const std::string path;
  const std::string name;
  std::vector<std::string> names;
};

FolderTree::FolderTree(wxWindow* parent, const std::string& name)
    : wxTreeCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                 wxTR_DEFAULT_STYLE | wxTR_SINGLE | wxBORDER_NONE, wxDefaultValidator, ToWx(name)) {
  SetImages(SmallIcons());
  Bind(wxEVT_TREE_SEL_CHANGED, &FolderTree::OnSelect, this);
  Bind(wxEVT_TREE_ITEM_EXPANDING, &FolderTree::OnOpen, this);
  Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent& event) {
    event.Skip();
    int where = 0;
    const bool on_current = HitTest(event.GetPosition(), where) == GetSelection() &&
                            (where & (wxTREE_HITTEST_ONITEMLABEL | wxTREE_HITTEST_ONITEMICON)) != 0;
    // Once the tree has handled the click itself: a look may take folders away.
    if (on_current) {
      CallAfter([this] {
        if (Clicked) Clicked();
      });
    }
  });
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
    AddRoot(ToWx(drive), kDriveImage, -1, new Item(drive, drive));
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
  const wxTreeItemId id = GetSelection();
  if (!id.IsOk()) return;
  if (IsExpanded(id) && GetChildrenCount(id, false) > 0) EnsureVisible(GetLastChild(id));
  EnsureVisible(id);
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
  wxTreeItemIdValue cookie;
  for (wxTreeItemId child = GetFirstChild(id, cookie); child.IsOk();
       child = GetNextChild(id, cookie)) {
    LookAgainBelow(child);
  }
}

void FolderTree::OnSelect(wxTreeEvent& event) {
  event.Skip();
  // What the tree selects by itself is no choice of the user.
  if (updating_ || !event.GetItem().IsOk()) return;
  folder_ = ItemOf(event.GetItem()).path;
  if (Change) Change();
}

void FolderTree::OnOpen(wxTreeEvent& event) {
  if (updating_) return;
  const RaisedFlag updating(updating_);
  const wxBusyCursor busy;
  const wxTreeItemId id = event.GetItem();
  try {
    Fill(id, SortedEntries(ItemOf(id).path));
  } catch (...) {
    if (Failed) Failed();
  }
  // Nothing to open: the item stays closed and loses its arrow.
  if (ItemOf(id).names.empty()) event.Veto();
}

FolderTree::Item& FolderTree::ItemOf(const wxTreeItemId& id) const {
  return static_cast<Item&>(*GetItemData(id));
}

wxTreeItemId FolderTree::Child(const wxTreeItemId& parent, const std::string& name) const {
  wxTreeItemIdValue cookie;
  wxTreeItemId child = GetFirstChild(parent, cookie);
  while (child.IsOk() && !IsSameName(ItemOf(child).name, name))
    child = GetNextChild(parent, cookie);
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
  wxTreeItemIdValue cookie;
  wxTreeItemId old = GetFirstChild(id, cookie);
  wxTreeItemId previous;
  const auto drop_old = [&] {
    const wxTreeItemId gone = old;
    old = GetNextSibling(old);
    Delete(gone);
  };
  for (const std::string& name : names) {
    while (old.IsOk() && !wanted.contains(ItemOf(old).name)) drop_old();
    if (old.IsOk() && ItemOf(old).name == name) {
      previous = old;
      old = GetNextSibling(old);
      continue;
    }
    auto* item = new Item(JoinPath(folder.path, name), name);
    previous = previous.IsOk() ? InsertItem(id, previous, ToWx(name), kFolderImage, -1, item)
                               : PrependItem(id, ToWx(name), kFolderImage, -1, item);
    SetItemImage(previous, kOpenFolderImage, wxTreeItemIcon_Expanded);
    // Every folder gets an arrow: only opening it tells whether there are folders in it.
    SetItemHasChildren(previous);
  }
  while (old.IsOk()) drop_old();
  folder.names = names;
}

}  // namespace korvex
