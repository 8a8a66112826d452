// The tree view of GTK.
#include "ui/native_tree.h"

#include <gtk/gtk.h>
#include <wx/artprov.h>
#include <wx/nativewin.h>
#include <wx/sizer.h>

#include <memory>

#include "ui/form_helpers.h"

namespace korvex {
namespace {

enum Column : int { kText, kNode, kColumns };

struct Node {
  GtkTreeIter place;  // valid as long as the item exists
  std::unique_ptr<wxTreeItemData> data;
};

using Picture = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Path = std::unique_ptr<GtkTreePath, decltype(&gtk_tree_path_free)>;

Node& NodeOf(const wxTreeItemId& item) {
  return *static_cast<Node*>(item.GetID());
}

GtkTreeIter* PlaceOf(const wxTreeItemId& item) {
  return item.IsOk() ? &NodeOf(item).place : nullptr;
}

// In as many pixels as the screen has.
Picture SmallPicture(const wxArtID& id, const wxWindow& window) {
  const wxBitmap bitmap =
      wxArtProvider::GetBitmapBundle(id, wxART_LIST, wxSize(16, 16)).GetBitmapFor(&window);
  return {gdk_cairo_surface_create_from_pixbuf(bitmap.GetPixbuf(),
                                               static_cast<int>(bitmap.GetScaleFactor()), nullptr),
          cairo_surface_destroy};
}

}  // namespace

// The view and what it calls back. A row of the model without a node is no item: it stands for the
// children that an item may have, which gives the item its arrow.
class NativeTree::Widget : public wxNativeWindow {
 public:
  explicit Widget(NativeTree& tree);
  ~Widget() override;

  GtkTreeStore* Store() const { return store_; }
  GtkTreeModel* Model() const { return GTK_TREE_MODEL(store_); }
  GtkTreeView* View() const { return view_; }
  GtkTreeSelection* Selection() const { return gtk_tree_view_get_selection(view_); }

  wxTreeItemId ItemAt(GtkTreeIter& place) const;
  Path PathOf(const wxTreeItemId& item) const;

 private:
  static void DrawPicture(GtkTreeViewColumn*, GtkCellRenderer* cell, GtkTreeModel* model,
                          GtkTreeIter* place, gpointer self);
  static void OnSelectionChanged(GtkTreeSelection*, Widget* self);
  static gboolean OnTestExpandRow(GtkTreeView*, GtkTreeIter* place, GtkTreePath*, Widget* self);
  static gboolean OnExpandOrCollapse(GtkTreeView* view, gboolean, gboolean expand,
                                     gboolean open_all, gpointer);
  static void OnRowActivated(GtkTreeView* view, GtkTreePath* path, GtkTreeViewColumn*, gpointer);

  void AddColumn();
  void OnKeyDown(wxKeyEvent& event);
  void OnLeftDown(wxMouseEvent& event);

  // The view takes the input and the colours; the window around it only scrolls.
  GtkWidget* GetConnectWidget() override { return GTK_WIDGET(view_); }
  void DoApplyWidgetStyle(GtkRcStyle* style) override { GTKApplyStyle(GTK_WIDGET(view_), style); }

  NativeTree& tree_;
  const Picture drive_picture_;
  const Picture folder_picture_;
  const Picture open_picture_;
  GtkTreeStore* store_;
  GtkTreeView* view_;
};

NativeTree::Widget::Widget(NativeTree& tree)
    : tree_(tree),
      drive_picture_(SmallPicture(wxART_HARDDISK, tree)),
      folder_picture_(SmallPicture(wxART_FOLDER, tree)),
      open_picture_(SmallPicture(wxART_FOLDER_OPEN, tree)),
      store_(gtk_tree_store_new(kColumns, G_TYPE_STRING, G_TYPE_POINTER)),
      view_(GTK_TREE_VIEW(gtk_tree_view_new_with_model(GTK_TREE_MODEL(store_)))) {
  AddColumn();
  gtk_tree_view_set_headers_visible(view_, FALSE);
  gtk_tree_view_set_search_column(view_, kText);
  gtk_tree_selection_set_mode(Selection(), GTK_SELECTION_BROWSE);
  g_signal_connect(Selection(), "changed", G_CALLBACK(OnSelectionChanged), this);
  g_signal_connect(view_, "test-expand-row", G_CALLBACK(OnTestExpandRow), this);
  g_signal_connect(view_, "expand-collapse-cursor-row", G_CALLBACK(OnExpandOrCollapse), nullptr);
  g_signal_connect(view_, "row-activated", G_CALLBACK(OnRowActivated), nullptr);
  m_focusWidget = GTK_WIDGET(view_);
  gtk_widget_show(m_focusWidget);
  GtkWidget* window = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_container_add(GTK_CONTAINER(window), m_focusWidget);
  Create(&tree, wxID_ANY, window);
  Bind(wxEVT_KEY_DOWN, &Widget::OnKeyDown, this);
  Bind(wxEVT_LEFT_DOWN, &Widget::OnLeftDown, this);
}

NativeTree::Widget::~Widget() {
  // The view outlives this object by a moment, and items that go must not call any more.
  g_signal_handlers_disconnect_by_data(Selection(), this);
  g_signal_handlers_disconnect_by_data(view_, this);
  gtk_tree_view_set_model(view_, nullptr);
  tree_.DeleteAllItems();
  g_object_unref(store_);
}

void NativeTree::Widget::AddColumn() {
  GtkTreeViewColumn* column = gtk_tree_view_column_new();
  GtkCellRenderer* picture = gtk_cell_renderer_pixbuf_new();
  gtk_tree_view_column_pack_start(column, picture, FALSE);
  gtk_tree_view_column_set_cell_data_func(column, picture, DrawPicture, this, nullptr);
  GtkCellRenderer* text = gtk_cell_renderer_text_new();
  gtk_tree_view_column_pack_start(column, text, TRUE);
  gtk_tree_view_column_set_spacing(column, FromDIP(3));
  gtk_tree_view_column_add_attribute(column, text, "text", kText);
  gtk_tree_view_append_column(view_, column);
}

void NativeTree::Widget::DrawPicture(GtkTreeViewColumn*, GtkCellRenderer* cell, GtkTreeModel* model,
                                     GtkTreeIter* place, gpointer self) {
  const auto& widget = *static_cast<Widget*>(self);
  gboolean is_open = FALSE;
  g_object_get(cell, "is-expanded", &is_open, nullptr);
  GtkTreeIter parent;
  const bool is_root = gtk_tree_model_iter_parent(model, &parent, place) == 0;
  const Picture& folder = is_open ? widget.open_picture_ : widget.folder_picture_;
  g_object_set(cell, "surface", (is_root ? widget.drive_picture_ : folder).get(), nullptr);
}

void NativeTree::Widget::OnSelectionChanged(GtkTreeSelection*, Widget* self) {
  const wxTreeItemId item = self->tree_.GetSelection();
  if (item.IsOk()) self->tree_.OnSelect(item);
}

gboolean NativeTree::Widget::OnTestExpandRow(GtkTreeView*, GtkTreeIter* place, GtkTreePath*,
                                             Widget* self) {
  const bool may_open = self->tree_.OnOpen(self->ItemAt(*place));
  return may_open ? FALSE : TRUE;
}

// A key. "*" would open all folders of the disk, and show rows that stand for folders: it opens
// one.
gboolean NativeTree::Widget::OnExpandOrCollapse(GtkTreeView* view, gboolean, gboolean expand,
                                                gboolean open_all, gpointer) {
  if (open_all == 0 || expand == 0) return FALSE;
  GtkTreePath* cursor = nullptr;
  gtk_tree_view_get_cursor(view, &cursor, nullptr);
  const Path path(cursor, gtk_tree_path_free);
  if (path) gtk_tree_view_expand_row(view, path.get(), FALSE);
  return TRUE;
}

// By a double click or Enter.
void NativeTree::Widget::OnRowActivated(GtkTreeView* view, GtkTreePath* path, GtkTreeViewColumn*,
                                        gpointer) {
  if (gtk_tree_view_collapse_row(view, path) == 0) gtk_tree_view_expand_row(view, path, FALSE);
}

// Left and Right, which the view itself does not open and close items with.
void NativeTree::Widget::OnKeyDown(wxKeyEvent& event) {
  const bool is_right = event.GetKeyCode() == WXK_RIGHT;
  const wxTreeItemId item = tree_.GetSelection();
  if (!item.IsOk() || event.HasAnyModifiers() || (!is_right && event.GetKeyCode() != WXK_LEFT))
    return event.Skip();
  const bool is_open = tree_.IsExpanded(item);
  wxTreeItemId next;
  if (is_right && is_open) {
    next = tree_.GetFirstChild(item);
  } else if (is_right) {
    tree_.Expand(item);
  } else if (is_open) {
    gtk_tree_view_collapse_row(view_, PathOf(item).get());
  } else if (GtkTreeIter parent; gtk_tree_model_iter_parent(Model(), &parent, PlaceOf(item)) != 0) {
    next = ItemAt(parent);
  }
  if (next.IsOk()) tree_.SelectItem(next);
}

void NativeTree::Widget::OnLeftDown(wxMouseEvent& event) {
  event.Skip();
  const wxPoint point = event.GetPosition();
  GtkTreePath* found = nullptr;
  GtkTreeViewColumn* column = nullptr;
  const bool is_blank = gtk_tree_view_is_blank_at_pos(view_, point.x, point.y, &found, &column,
                                                      nullptr, nullptr) != 0;
  const Path path(found, gtk_tree_path_free);
  if (is_blank) return;
  GdkRectangle cell;  // the arrow stands left of it
  gtk_tree_view_get_cell_area(view_, found, column, &cell);
  GtkTreeIter place;
  if (point.x >= cell.x && gtk_tree_model_get_iter(Model(), &place, found) != 0)
    tree_.OnPress(ItemAt(place));
}

wxTreeItemId NativeTree::Widget::ItemAt(GtkTreeIter& place) const {
  Node* node = nullptr;
  gtk_tree_model_get(Model(), &place, kNode, &node, -1);
  return wxTreeItemId(node);
}

Path NativeTree::Widget::PathOf(const wxTreeItemId& item) const {
  return {gtk_tree_model_get_path(Model(), PlaceOf(item)), gtk_tree_path_free};
}

NativeTree::NativeTree(wxWindow* parent, const std::string& name)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL | wxBORDER_THEME,
              ToWx(name)),
      widget_(new Widget(*this)) {
  widget_->SetName(GetName());
  SetSizer(new wxBoxSizer(wxVERTICAL));
  GetSizer()->Add(widget_, wxSizerFlags(1).Expand());
}

// The widget goes first: it takes its items away by this object.
NativeTree::~NativeTree() {
  DestroyChildren();
}

wxTreeItemId NativeTree::GetRootItem() const {
  return GetFirstChild({});
}

wxTreeItemId NativeTree::GetFirstChild(const wxTreeItemId& parent) const {
  GtkTreeIter child;
  if (gtk_tree_model_iter_children(widget_->Model(), &child, PlaceOf(parent)) == 0) return {};
  return widget_->ItemAt(child);
}

wxTreeItemId NativeTree::GetLastChild(const wxTreeItemId& parent) const {
  GtkTreeModel* model = widget_->Model();
  GtkTreeIter child;
  const int count = gtk_tree_model_iter_n_children(model, PlaceOf(parent));
  if (count == 0) return {};
  gtk_tree_model_iter_nth_child(model, &child, PlaceOf(parent), count - 1);
  return widget_->ItemAt(child);
}

wxTreeItemId NativeTree::GetNextSibling(const wxTreeItemId& item) const {
  GtkTreeIter next = *PlaceOf(item);
  if (gtk_tree_model_iter_next(widget_->Model(), &next) == 0) return {};
  return widget_->ItemAt(next);
}

wxTreeItemId NativeTree::GetPrevSibling(const wxTreeItemId& item) const {
  GtkTreeIter previous = *PlaceOf(item);
  if (gtk_tree_model_iter_previous(widget_->Model(), &previous) == 0) return {};
  return widget_->ItemAt(previous);
}

wxTreeItemId NativeTree::GetSelection() const {
  GtkTreeIter place;
  if (gtk_tree_selection_get_selected(widget_->Selection(), nullptr, &place) == 0) return {};
  return widget_->ItemAt(place);
}

wxString NativeTree::GetItemText(const wxTreeItemId& item) const {
  gchar* text = nullptr;
  gtk_tree_model_get(widget_->Model(), PlaceOf(item), kText, &text, -1);
  const std::unique_ptr<gchar, decltype(&g_free)> owner(text, g_free);
  return wxString::FromUTF8(text);
}

wxTreeItemData* NativeTree::GetItemData(const wxTreeItemId& item) const {
  return NodeOf(item).data.get();
}

bool NativeTree::ItemHasChildren(const wxTreeItemId& item) const {
  return gtk_tree_model_iter_has_child(widget_->Model(), PlaceOf(item)) != 0;
}

bool NativeTree::IsExpanded(const wxTreeItemId& item) const {
  return gtk_tree_view_row_expanded(widget_->View(), widget_->PathOf(item).get()) != 0;
}

wxTreeItemId NativeTree::AddRoot(const wxString& text, wxTreeItemData* data) {
  return InsertItem({}, {}, text, data);
}

wxTreeItemId NativeTree::InsertItem(const wxTreeItemId& parent, const wxTreeItemId& next,
                                    const wxString& text, wxTreeItemData* data) {
  auto* node = new Node{{}, std::unique_ptr<wxTreeItemData>(data)};
  const wxTreeItemId item(node);
  GtkTreeIter first;
  const bool stands_for_children =
      gtk_tree_model_iter_children(widget_->Model(), &first, PlaceOf(parent)) != 0 &&
      !widget_->ItemAt(first).IsOk();
  gtk_tree_store_insert_before(widget_->Store(), &node->place, PlaceOf(parent), PlaceOf(next));
  gtk_tree_store_set(widget_->Store(), &node->place, kText, text.utf8_str().data(), kNode, node,
                     -1);
  // Not before: an open item closes when it loses its last row.
  if (stands_for_children) gtk_tree_store_remove(widget_->Store(), &first);
  return item;
}

void NativeTree::Delete(const wxTreeItemId& item) {
  const std::unique_ptr<Node> node(&NodeOf(item));
  while (GetFirstChild(item).IsOk()) Delete(GetFirstChild(item));
  gtk_tree_store_remove(widget_->Store(), &node->place);
}

void NativeTree::DeleteAllItems() {
  if (GetRootItem().IsOk()) Delete(GetRootItem());
}

void NativeTree::SetItemHasChildren(const wxTreeItemId& item, bool has) {
  GtkTreeIter child;
  const bool has_row = gtk_tree_model_iter_children(widget_->Model(), &child, PlaceOf(item)) != 0;
  if (has && !has_row) {
    gtk_tree_store_append(widget_->Store(), &child, PlaceOf(item));
  } else if (!has && has_row && !widget_->ItemAt(child).IsOk()) {
    gtk_tree_store_remove(widget_->Store(), &child);
  }
}

void NativeTree::Expand(const wxTreeItemId& item) {
  gtk_tree_view_expand_row(widget_->View(), widget_->PathOf(item).get(), FALSE);
}

void NativeTree::SelectItem(const wxTreeItemId& item) {
  gtk_tree_view_set_cursor(widget_->View(), widget_->PathOf(item).get(), nullptr, FALSE);
}

// Always to the same height: before the view has measured its rows it can keep one place to scroll
// to, but not find out what is in sight.
void NativeTree::ScrollTo(const wxTreeItemId& item) {
  constexpr float kFromTop = 0.25F;
  gtk_tree_view_scroll_to_cell(widget_->View(), widget_->PathOf(item).get(), nullptr, TRUE,
                               kFromTop, 0);
}

bool NativeTree::SetBackgroundColour(const wxColour& colour) {
  return widget_->SetBackgroundColour(colour);
}

bool NativeTree::SetForegroundColour(const wxColour& colour) {
  return widget_->SetForegroundColour(colour);
}

}  // namespace korvex
