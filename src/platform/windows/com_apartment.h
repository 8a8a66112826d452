// Initializes COM on a thread, for components of the shell too, for its own lifetime. A thread that
// has an apartment of another kind already keeps that one.
#pragma once

#include "platform/windows/windows_api.h"

// After the header of the system, which it needs.
#include <objbase.h>

namespace korvex {

// The objects that are used here (the folder browser, applications by automation) belong to the
// thread that made them.
class ComApartment {
 public:
  ComApartment()
      : is_ours_(
            SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {
  }
  ~ComApartment() {
    if (is_ours_) CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  // COM has to be ended as often as it was successfully initialized, and no more often.
  const bool is_ours_;
};

}  // namespace korvex
