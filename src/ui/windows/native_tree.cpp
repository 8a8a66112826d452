// The tree control of Windows.
#include "ui/native_tree.h"

#include <wx/artprov.h>
#include <wx/sizer.h>
#include <wx/treectrl.h>

#include <initializer_list>

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

class NativeTree::Widget : public wxTreeCtrl {
 public:
  explicit Widget(NativeTree& tree)
      : wxTreeCtrl(&tree, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                   wxTR_DEFAULT_STYLE | wxTR_SINGLE | wxBORDER_NONE, wxDefaultValidator,
                   tree.GetName()) {
    SetImages(SmallIcons());
    Bind(wxEVT_TREE_SEL_CHANGED, [&tree](wxTreeEvent& event) {
      if (event.GetItem().IsOk()) tree.OnSelect(event.GetItem());
    });
    Bind(wxEVT_TREE_ITEM_EXPANDING, [&tree](wxTreeEvent& event) {
      if (!tree.OnOpen(event.GetItem())) event.Veto();
    });
    Bind(wxEVT_LEFT_DOWN, [this, &tree](wxMouseEvent& event) {
      event.Skip();
      int where = 0;
      const wxTreeItemId item = HitTest(event.GetPosition(), where);
      if ((where & (wxTREE_HITTEST_ONITEMLABEL | wxTREE_HITTEST_ONITEMICON)) != 0)
        tree.OnPress(item);
    });
  }
  // Items that go must not call any more.
  ~Widget() override { SetEvtHandlerEnabled(false); }
};

NativeTree::NativeTree(wxWindow* parent, const std::string& name)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL | wxBORDER_THEME,
              ToWx(name)),
      widget_(new Widget(*this)) {
  SetSizer(new wxBoxSizer(wxVERTICAL));
  GetSizer()->Add(widget_, wxSizerFlags(1).Expand());
}

// The widget goes first: it takes its items away by this object.
NativeTree::~NativeTree() {
  DestroyChildren();
}

wxTreeItemId NativeTree::GetRootItem() const {
  return widget_->GetRootItem();
}

wxTreeItemId NativeTree::GetFirstChild(const wxTreeItemId& parent) const {
  wxTreeItemIdValue cookie;
  return widget_->GetFirstChild(parent, cookie);
}

wxTreeItemId NativeTree::GetLastChild(const wxTreeItemId& parent) const {
  return widget_->GetLastChild(parent);
}

wxTreeItemId NativeTree::GetPrevSibling(const wxTreeItemId& item) const {
  return widget_->GetPrevSibling(item);
}

wxTreeItemId NativeTree::GetNextSibling(const wxTreeItemId& item) const {
  return widget_->GetNextSibling(item);
}

wxTreeItemId NativeTree::GetSelection() const {
  return widget_->GetSelection();
}

wxString NativeTree::GetItemText(const wxTreeItemId& item) const {
  return widget_->GetItemText(item);
}

wxTreeItemData* NativeTree::GetItemData(const wxTreeItemId& item) const {
  return widget_->GetItemData(item);
}

bool NativeTree::ItemHasChildren(const wxTreeItemId& item) const {
  return widget_->ItemHasChildren(item);
}

bool NativeTree::IsExpanded(const wxTreeItemId& item) const {
  return widget_->IsExpanded(item);
}

wxTreeItemId NativeTree::AddRoot(const wxString& text, wxTreeItemData* data) {
  return widget_->AddRoot(text, kDriveImage, -1, data);
}

wxTreeItemId NativeTree::InsertItem(const wxTreeItemId& parent, const wxTreeItemId& next,
                                    const wxString& text, wxTreeItemData* data) {
  const wxTreeItemId previous =
      next.IsOk() ? widget_->GetPrevSibling(next) : widget_->GetLastChild(parent);
  const wxTreeItemId item =
      previous.IsOk() ? widget_->InsertItem(parent, previous, text, kFolderImage, -1, data)
                      : widget_->PrependItem(parent, text, kFolderImage, -1, data);
  widget_->SetItemImage(item, kOpenFolderImage, wxTreeItemIcon_Expanded);
  return item;
}

void NativeTree::Delete(const wxTreeItemId& item) {
  widget_->Delete(item);
}

void NativeTree::DeleteAllItems() {
  widget_->DeleteAllItems();
}

void NativeTree::SetItemHasChildren(const wxTreeItemId& item, bool has) {
  widget_->SetItemHasChildren(item, has);
}

void NativeTree::Expand(const wxTreeItemId& item) {
  widget_->Expand(item);
}

void NativeTree::SelectItem(const wxTreeItemId& item) {
  widget_->SelectItem(item);
}

void NativeTree::ScrollTo(const wxTreeItemId& item) {
  const wxTreeItemId last = widget_->GetLastChild(item);
  if (last.IsOk() && widget_->IsExpanded(item)) widget_->EnsureVisible(last);
  widget_->EnsureVisible(item);
}

bool NativeTree::SetBackgroundColour(const wxColour& colour) {
  return widget_->SetBackgroundColour(colour);
}

bool NativeTree::SetForegroundColour(const wxColour& colour) {
  return widget_->SetForegroundColour(colour);
}

}  // namespace korvex
