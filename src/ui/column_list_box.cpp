#include "ui/column_list_box.h"

#include <algorithm>
#include <cstdlib>

#include "ui/form_helpers.h"

namespace korvex {

ColumnListBox::ColumnListBox(wxWindow* parent, const char* name)
    : wxListBox(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr,
                wxLB_SINGLE | wxLB_NEEDED_SB | wxLB_HSCROLL, wxDefaultValidator, name) {
  SelectOnlyWhenAsked(*this);
  Bind(wxEVT_KEY_DOWN, &ColumnListBox::OnKey, this);
  Bind(wxEVT_LEFT_DOWN, &ColumnListBox::OnPress, this);
  Bind(wxEVT_LEFT_DCLICK, &ColumnListBox::OnPress, this);  // soon after a click
  Bind(wxEVT_MOTION, &ColumnListBox::OnMotion, this);
}

ColumnList ColumnListBox::Columns() const {
  ColumnList columns;
  for (const wxString& name : GetStrings()) columns.names.push_back(FromWx(name));
  if (const int selected = GetSelection(); selected != wxNOT_FOUND) {
    columns.selected = static_cast<std::size_t>(selected);
  }
  return columns;
}

void ColumnListBox::ShowAdded(const ColumnList& columns, std::size_t position) {
  Insert(ToWx(columns.names[position]), static_cast<unsigned>(position));
  ShowSelection(columns);
  EnsureVisible(static_cast<int>(position));
}

void ColumnListBox::ShowRemoved(const ColumnList& columns, std::size_t position) {
  Delete(static_cast<unsigned>(position));
  ShowSelection(columns);
}

void ColumnListBox::ShowSelection(const ColumnList& columns) {
  if (columns.selected) SetSelection(static_cast<int>(*columns.selected));
}

void ColumnListBox::MoveSelected(int to) {
  const int from = GetSelection();
  if (from == wxNOT_FOUND || to == from || to < 0 || to >= static_cast<int>(GetCount())) return;
  const wxString name = GetString(static_cast<unsigned>(from));
  Delete(static_cast<unsigned>(from));
  Insert(name, static_cast<unsigned>(to));
  SetSelection(to);
  EnsureVisible(to);
}

void ColumnListBox::OnKey(wxKeyEvent& event) {
  const int key = event.GetKeyCode();
  const bool up = key == WXK_UP || key == WXK_NUMPAD_UP;
  const bool down = key == WXK_DOWN || key == WXK_NUMPAD_DOWN;
  if (event.AltDown() && (up || down)) {
    MoveSelected(GetSelection() + (up ? -1 : 1));
  } else {
    event.Skip();
  }
}

void ColumnListBox::OnPress(wxMouseEvent& event) {
  dragging_ = false;
  pressed_at_.reset();
  const int name = HitTest(event.GetPosition());
  if (event.ControlDown() && name != wxNOT_FOUND && name == GetSelection()) {
    SetSelection(wxNOT_FOUND);
    return;
  }
  if (name != wxNOT_FOUND) pressed_at_ = event.GetY();
  event.Skip();
}

// The name changes places with those that the mouse passes: what is seen is what will be.
void ColumnListBox::OnMotion(wxMouseEvent& event) {
  if (!event.LeftIsDown() || !pressed_at_) {
    pressed_at_.reset();
    event.Skip();
    return;
  }
  // Not passed on: Windows would select what the mouse is over.
  dragging_ = dragging_ || std::abs(event.GetY() - *pressed_at_) > GetCharHeight() / 2;
  if (dragging_) MoveSelected(NameAt(event.GetY()));
}

int ColumnListBox::NameAt(int y) const {
  const int selected = GetSelection();
  const int last = static_cast<int>(GetCount()) - 1;
  if (y < 0) return std::max(selected - 1, 0);
  if (y >= GetClientSize().GetHeight()) return std::min(selected + 1, last);
  const int name = HitTest(wxPoint(GetClientSize().GetWidth() / 2, y));
  return name == wxNOT_FOUND ? last : name;
}

}  // namespace korvex
