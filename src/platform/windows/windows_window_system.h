// The system menu and the folder browser of Windows. A native handle is an HWND.
#pragma once

#include "platform/window_system.h"

namespace korvex {

class WindowsWindowSystem : public WindowSystem {
 public:
  int EnableCloseButton(void* window, bool enable) override;
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;
};

}  // namespace korvex
