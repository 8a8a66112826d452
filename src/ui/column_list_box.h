// A list box of column names that the user puts in order.
#pragma once

#include <wx/listbox.h>

#include <optional>

#include "ui/option_choices.h"

namespace korvex {

// At most one name is selected. It follows the mouse that drags it, and the keys Alt+Up and
// Alt+Down. A click on blank space, or with Ctrl on the selected name, selects none: what is added
// then comes to the end.
class ColumnListBox : public wxListBox {
 public:
  ColumnListBox(wxWindow* parent, const char* name);

  ColumnList Columns() const;
  // These show what a function of option_choices has done to `columns`. One name changes and the
  // others stay: a list that is filled anew would scroll to its top.
  void ShowAdded(const ColumnList& columns, std::size_t position);
  void ShowRemoved(const ColumnList& columns, std::size_t position);

  // Moves the selected name to that place, as far as there is one.
  void MoveSelected(int to);

 private:
  void OnKey(wxKeyEvent& event);
  void OnPress(wxMouseEvent& event);
  void OnMotion(wxMouseEvent& event);
  // The name at that height, with the nearest one beyond the ends.
  int NameAt(int y) const;
  void ShowSelection(const ColumnList& columns);

  std::optional<int> pressed_at_;  // height of the press that may begin to drag
  bool dragging_ = false;
};

}  // namespace korvex
