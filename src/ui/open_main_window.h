#pragma once

#include <wx/weakref.h>

#include <string>

#include "platform/main_window.h"
#include "ui/frmMain.h"

namespace korvex {

// The main window that is open at this moment: deleting the settings puts a fresh one in the place
// of the old.
class OpenMainWindow : public MainWindow {
 public:
  // Loads a main window and shows it.
  frmMain& Show() {
    window_ = new frmMain([this] { Show(); });
    window_->Show();
    return *window_;
  }

  // Null while no window is open.
  frmMain* Window() const { return window_; }

  // Empty while no window is open.
  std::string ProcessingFolder() const override {
    return window_ ? window_->ProcessingFolder() : std::string();
  }

 private:
  wxWeakRef<frmMain> window_;
};

}  // namespace korvex
