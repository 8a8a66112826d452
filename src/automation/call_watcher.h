// The thread that watches the calls into another program, and what cancels them: a service of COM.
#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "automation/call_watch.h"
#include "platform/windows/windows_handle.h"

namespace korvex {

// Watches the calls of the thread that made it, until it goes. Needs COM on that thread.
class CallWatcher {
 public:
  // `stop_is_asked` is called on the watching thread. Empty, or where COM cannot cancel calls,
  // nothing is watched.
  explicit CallWatcher(std::function<bool()> stop_is_asked);
  ~CallWatcher();
  CallWatcher(const CallWatcher&) = delete;
  CallWatcher& operator=(const CallWatcher&) = delete;

  // Null when nothing is watched.
  CallWatch* Watch() const { return watch_.get(); }

 private:
  std::unique_ptr<CallWatch> watch_;
  Handle end_;
  std::thread thread_;
};

}  // namespace korvex
