#pragma once

#include "platform/error.h"

namespace korvex {

// The error that a call raises; number 0 when it raises none.
template <class Call>
Error ErrorOf(Call call) {
  try {
    call();
  } catch (...) {
    return PendingError();
  }
  return Error(0, "", "");
}

}  // namespace korvex
