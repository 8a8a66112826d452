#include "automation/call_watch.h"

#include <utility>

namespace korvex {

CallWatch::CallWatch(std::function<bool()> stop_is_asked, std::function<void()> cancel,
                     std::function<TimePoint()> now)
    : stop_is_asked_(std::move(stop_is_asked)), cancel_(std::move(cancel)), now_(std::move(now)) {}

CallWatch::Call::Call(CallWatch* watch) : watch_(watch) {
  if (watch_ == nullptr) return;
  const std::lock_guard lock(watch_->mutex_);
  watch_->begin_ = watch_->now_();
}

CallWatch::Call::~Call() {
  if (watch_ == nullptr) return;
  const std::lock_guard lock(watch_->mutex_);
  watch_->begin_.reset();
}

bool CallWatch::GivesUp(TimePoint begin) const {
  return now_() - begin >= kPatience && stop_is_asked_();
}

void CallWatch::Look() {
  const std::lock_guard lock(mutex_);
  if (begin_ && GivesUp(*begin_)) cancel_();
}

}  // namespace korvex
