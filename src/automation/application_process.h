// The process that an application driven by automation runs in.
#pragma once

#include <chrono>

#include "platform/windows/windows_handle.h"

namespace korvex {

// Ends the process when it goes, and when this program ends, even when it is killed. Where the
// system does not let it, it does nothing.
class ApplicationProcess {
 public:
  // Of no process.
  ApplicationProcess() = default;
  // Of the process that the window belongs to.
  explicit ApplicationProcess(HWND window);

  // Leaves the process to the user.
  void SetFree();
  // Waits until it has ended by itself, or for that long.
  void WaitForEnd(std::chrono::milliseconds patience) const;

 private:
  Handle process_;
  Handle job_;  // kills what is in it when its last handle is closed
};

}  // namespace korvex
