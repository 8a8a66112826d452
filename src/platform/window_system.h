// What the machine's own window system does beyond what the toolkit of the windows offers. Windows
// are passed by their native handle; texts are UTF-8.
#pragma once

#include <string>

namespace korvex {

class WindowSystem {
 public:
  virtual ~WindowSystem() = default;

  // Takes the close item of a window's system menu out of use, and thereby its close box, or puts
  // it back. Returns 0 when that is done or there is no such item, -1 when `window` is no window,
  // -2 when the item's identifier cannot be changed, and -3 when its state cannot.
  virtual int EnableCloseButton(void* window, bool enable) = 0;
  // A folder of the file system, from anywhere; empty when the user cancels.
  virtual std::string BrowseForFolder(void* owner, const std::string& prompt) = 0;
  // A share of the network, or a folder in one; empty when the user cancels or stops at a computer.
  virtual std::string BrowseNetwork(void* owner, const std::string& title) = 0;
};

}  // namespace korvex
