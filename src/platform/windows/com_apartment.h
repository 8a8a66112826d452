// Initializes COM on a thread, for components of the shell too, for its own lifetime. A thread that
// has an apartment of another kind already keeps that one.
#pragma once

#include "platform/windows/windows_api.h"

// After the header of the system, which it needs.
#include <objbase.h>

namespace korvex {

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
  const bool is_ours_;
};

}  // namespace korvex
