// Owns one open file, or another object that the system gives out as a handle.
#pragma once

#include <utility>

#include "platform/windows/windows_api.h"

namespace korvex {

// Counts as open unless it is null or INVALID_HANDLE_VALUE: a system call that fails answers with
// one or the other.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(other.Release()) {}
  Handle& operator=(Handle&& other) noexcept {
    if (this != &other) {
      Close();
      handle_ = other.Release();
    }
    return *this;
  }
  ~Handle() { Close(); }

  HANDLE Get() const { return handle_; }
  bool IsOpen() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
  // The caller closes it then.
  HANDLE Release() { return std::exchange(handle_, nullptr); }
  // False when the system reports now that something written could not be stored.
  bool Close() { return !IsOpen() || CloseHandle(Release()); }

 private:
  HANDLE handle_ = nullptr;
};

}  // namespace korvex
