// The desktop of a Windows machine: the shell, with Notepad for plain texts; the sounds that the
// user has chosen for the events of the system; the system menu of a window and the folder browser.
// A native handle is an HWND.
#pragma once

#include "platform/desktop.h"

namespace korvex {

// Whether windows of this process can be seen: not those of services and of jobs that run while
// nobody is signed in.
bool HasDesktop();

class WindowsShell : public Shell {
 public:
  // Nothing happens for a file that does not exist or that no program opens.
  void Open(const std::string& file) override;
  // Does not take the focus from the program's own window.
  void OpenInTextEditor(const std::string& file) override;
  std::string EnvironmentVariable(const std::string& name) const override;
};

// A sound does not wait for its end, and is left out while another program plays one.
class WindowsSound : public Sound {
 public:
  void Beep() override;
  void PlayAlias(const std::string& alias) override;
};

class WindowsWindowSystem : public WindowSystem {
 public:
  // By giving the item an identifier that is no command, and back.
  int EnableCloseButton(void* window, bool enable) override;
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;
};

}  // namespace korvex
