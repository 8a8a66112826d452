#include "ui/accessible_names.h"

#include <wx/panel.h>

#include <map>

#include "ui/form_helpers.h"

namespace korvex {

void NameControls(wxWindow& window) {
  static const std::map<std::string, const char*> kNames = {
      {"drvMain", "Drive"},
      {"dirMain", "Folders"},
      {"filMain", "Files"},
      {"txtNote", "What will be read"},
      {"txtPattern", "Filename Pattern"},
      {"prg", "Progress"},
      {"tabOptions", "Options"},
      {"txtFilename", "Name of the output file"},
      {"txtOutputFile", "Full name of the output file"},
      {"txtEmailAddress", "E-mail address"},
      {"lstAvailableCols", "Available Columns"},
      {"cmdToKeys", "Add to the key"},
      {"cmdFromKeys", "Remove from the key"},
      {"lstKeyColumns", "Columns that comprise the key"},
      {"cmdToOutput", "Add to the output file"},
      {"cmdFromOutput", "Remove from the output file"},
      {"lstOutputColumns", "Columns for the output file"},
      {"cboDataCol", "Data Column"},
      {"cmdSampleFile", "Launch Sample File"},
      {"txtMessage", "Message"},
  };
  for (wxWindow* control : window.GetChildren()) {
    const auto found = kNames.find(FromWx(control->GetName()));
    // A panel has the name of what it borders.
    if (found != kNames.end() && !dynamic_cast<wxPanel*>(control))
      SetAccessibleName(*control, found->second);
    NameControls(*control);
  }
}

}  // namespace korvex
