// A tree of named items in the platform's own widget, whose items keyboard users and screen readers
// know: the tree view of GTK, the tree control of Windows. Implemented in either folder.
//
// The calls mean what those of wxTreeCtrl mean. Each item below the root is a folder to look at,
// with another picture while it is open.
#pragma once

#include <wx/panel.h>
#include <wx/treebase.h>

#include <string>

namespace korvex {

class NativeTree : public wxPanel {
 public:
  NativeTree(wxWindow* parent, const std::string& name);
  ~NativeTree() override;

  wxTreeItemId GetRootItem() const;
  wxTreeItemId GetFirstChild(const wxTreeItemId& parent) const;
  wxTreeItemId GetLastChild(const wxTreeItemId& parent) const;
  wxTreeItemId GetNextSibling(const wxTreeItemId& item) const;
  wxTreeItemId GetPrevSibling(const wxTreeItemId& item) const;
  wxTreeItemId GetSelection() const;
  wxString GetItemText(const wxTreeItemId& item) const;
  wxTreeItemData* GetItemData(const wxTreeItemId& item) const;
  bool ItemHasChildren(const wxTreeItemId& item) const;
  bool IsExpanded(const wxTreeItemId& item) const;

  // Both take the data over. `previous` is the sibling before the new item; none makes it the
  // first.
  wxTreeItemId AddRoot(const wxString& text, wxTreeItemData* data);
  wxTreeItemId InsertItem(const wxTreeItemId& parent, const wxTreeItemId& next,
                          const wxString& text, wxTreeItemData* data);
  void Delete(const wxTreeItemId& item);
  void DeleteAllItems();

  // Gives an item the arrow that opens it before it has children, or takes it away.
  void SetItemHasChildren(const wxTreeItemId& item, bool has);
  void Expand(const wxTreeItemId& item);
  void SelectItem(const wxTreeItemId& item);
  // So that the item shows, and as many of its children as fit.
  void ScrollTo(const wxTreeItemId& item);

  // Of the area of the items.
  bool SetBackgroundColour(const wxColour& colour) override;
  bool SetForegroundColour(const wxColour& colour) override;

 private:
  class Widget;

  // Called for what the user does and for calls alike.
  virtual void OnSelect(const wxTreeItemId& item) = 0;
  // An item is about to show its children. Returns whether it may.
  virtual bool OnOpen(const wxTreeItemId& item) = 0;
  // The user presses the mouse on an item, which is not selected by that yet.
  virtual void OnPress(const wxTreeItemId& item) = 0;

  Widget* widget_;
};

}  // namespace korvex
