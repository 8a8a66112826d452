#include "ui/accessible_names.h"

#include <gtk/gtk.h>

namespace korvex {

void SetAccessibleName(wxWindow& control, const std::string& name) {
  // A list has the focus inside a window that scrolls it; readers meet both.
  for (GtkWidget* widget : {control.GetHandle(), control.GetConnectWidget()})
    atk_object_set_name(gtk_widget_get_accessible(widget), name.c_str());
}

void SetAccessibleMessage(wxWindow& dialog, const std::string& text) {
  AtkObject* accessible = gtk_widget_get_accessible(dialog.GetHandle());
  atk_object_set_role(accessible, ATK_ROLE_ALERT);
  atk_object_set_description(accessible, text.c_str());
}

}  // namespace korvex
