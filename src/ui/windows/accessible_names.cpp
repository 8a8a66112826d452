#include "ui/accessible_names.h"

#include <wx/access.h>

#include "ui/form_helpers.h"

namespace korvex {
namespace {

// What it does not know the platform's own object answers, also for the items of a list.
class Accessible : public wxAccessible {
 public:
  Accessible(wxWindow& window, const std::string& name, const std::string& description)
      : wxAccessible(&window), name_(ToWx(name)), description_(ToWx(description)) {}

  wxAccStatus GetName(int child, wxString* name) override { return Answer(child, name_, name); }
  wxAccStatus GetDescription(int child, wxString* description) override {
    return Answer(child, description_, description);
  }

 private:
  static wxAccStatus Answer(int child, const wxString& text, wxString* answer) {
    if (child != wxACC_SELF || text.empty()) return wxACC_NOT_IMPLEMENTED;
    *answer = text;
    return wxACC_OK;
  }

  wxString name_;
  wxString description_;
};

}  // namespace

void SetAccessibleName(wxWindow& control, const std::string& name) {
  control.SetAccessible(new Accessible(control, name, ""));
}

void SetAccessibleMessage(wxWindow& dialog, const std::string& text) {
  dialog.SetAccessible(new Accessible(dialog, "", text));
}

}  // namespace korvex
