// Gives up calls into another program that do not return, once the user wants the run to stop. A
// call that waits for an answer in a window that nobody sees would wait for ever.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

namespace korvex {

class CallWatch {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  // A call that takes less is left to end by itself.
  static constexpr std::chrono::seconds kPatience{5};

  // `cancel` makes the call that is under way fail; it is called from Look, and again at every look
  // until the call has ended. `stop_is_asked` is called on any thread.
  CallWatch(std::function<bool()> stop_is_asked, std::function<void()> cancel,
            std::function<TimePoint()> now = std::chrono::steady_clock::now);

  // One call, on the thread that makes it. Without a watch it does nothing.
  class Call {
   public:
    explicit Call(CallWatch* watch);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    CallWatch* watch_;
  };

  // Cancels what has to be given up; from another thread, a few times a second.
  void Look();
  // Whether what was begun at that time is to be given up.
  bool GivesUp(TimePoint begin) const;

 private:
  std::function<bool()> stop_is_asked_;
  std::function<void()> cancel_;
  std::function<TimePoint()> now_;
  std::mutex mutex_;  // held while cancelling, so that no later call is met
  std::optional<TimePoint> begin_;
};

}  // namespace korvex
