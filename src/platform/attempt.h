#pragma once

namespace korvex {

// Takes a step whose failure must not keep the steps after it from being taken. False when it
// failed.
template <class Step>
bool Attempt(Step&& step) {
  try {
    step();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace korvex
