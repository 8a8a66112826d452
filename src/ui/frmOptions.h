// The options dialog.
#pragma once

#include <wx/dialog.h>

#include <string>
#include <vector>

namespace korvex {

class frmOptions : public wxDialog {
 public:
  // Shows the dialog and returns when it has closed. `parent_path` is the folder that the main
  // window shows, `files` its selected files.
  static void ShowOptions(const std::string& parent_path, const std::vector<std::string>& files,
                          wxWindow* owner);
};

}  // namespace korvex
