// The platform services that a program with windows provides itself: dialogs, message loop, and the
// main window that a run is started from.
#pragma once

#include <wx/frame.h>
#include <wx/weakref.h>

#include <string>
#include <vector>

#include "platform/dialogs.h"
#include "ui/frmMain.h"

namespace korvex {

// The platform's standard message box and folder browser, and the program's own message box. They
// stand in front of the window that is active.
class WindowDialogs : public Dialogs {
 public:
  BoxAnswer ShowPlain(const PlainMessage& message) override;
  std::string ShowButtons(const ButtonMessage& message) override;
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;
};

class WindowMessageLoop : public MessageLoop {
 public:
  // Does nothing when it is called from what it serves.
  void Yield() override;

 private:
  bool serving_ = false;
};

// The main window that is open at this moment: deleting the settings closes it and opens a new one.
class OpenMainWindow : public MainWindow {
 public:
  // Loads a main window and shows it, with these paths opened in it.
  frmMain& Show(const std::vector<std::string>& paths = {}) {
    window_ = new frmMain([this] { Show(); });
    window_->Show();
    if (!paths.empty()) window_->CallAfter([this, paths] { window_->OpenPaths(paths); });
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
