// Makes a thread a place for COM, and for the components of the shell, while it lives. Where
// somebody has chosen another kind of apartment for the thread before, that one serves.
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
