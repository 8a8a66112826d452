#include "ui/centre.h"

namespace korvex {

void CentreWhenShown(wxTopLevelWindow& window) {
  window.Bind(wxEVT_SHOW, [&window, size = window.GetSize()](wxShowEvent& event) {
    event.Skip();
    if (!event.IsShown()) return;
    window.SetSize(size);
    window.CentreOnParent();
  });
}

}  // namespace korvex
