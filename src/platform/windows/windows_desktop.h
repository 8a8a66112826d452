// The desktop of a Windows machine: the shell, with Notepad for plain texts; the sounds that the
// user has chosen for the events of the system; the system menu of a window and the folder browser.
// A native handle is an HWND.
#pragma once

#include "platform/desktop.h"

namespace korvex {

class WindowsShell : public Shell {
 public:
  void Open(const std::string& file) override;
  // Does not take the focus from the program's own window.
  void OpenInTextEditor(const std::string& file) override;
  std::string EnvironmentVariable(const std::string& name) const override;
};

class WindowsSound : public Sound {
 public:
  void Beep() override;
  void PlayAlias(const std::string& alias) override;
};

class WindowsWindowSystem : public WindowSystem {
 public:
  int EnableCloseButton(void* window, bool enable) override;
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;
};

}  // namespace korvex
