// The trap around a procedure that handles its own errors.
//
//   Trap("frmMain.mnuExit_Click", [&] { ... });                    reports every error
//   Trap("frmMain.cmdProcess_Click", [&] { ... },
//        [&](const TrappedError& error) { ... });                  handles it in its own way
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "errors/basFuncs.h"
#include "platform/error.h"

namespace korvex {

// The error that a trap has caught; it stays the pending one while the handler runs.
// `location` (unit, point, procedure) is a literal, or must outlive the handler.
class TrappedError {
 public:
  explicit TrappedError(const char* location) : location_(location), error_(PendingError()) {}

  int Number() const { return error_.Number(); }

  // Whether the user has been told already (error 17).
  bool IsTold() const { return Number() == error_number::kCannotPerform; }

  // As the free function, with the location of the trap.
  void Report(const std::optional<std::string>& message = std::nullopt) const {
    korvex::Report(location_, message);
  }

 private:
  const char* location_;
  Error error_;
};

// Runs the body; whatever it throws goes to the handler. What the handler throws reaches the
// caller.
template <class Body, class Handler>
void Trap(const char* location, Body&& body, Handler&& handler) {
  try {
    std::forward<Body>(body)();
  } catch (...) {
    std::forward<Handler>(handler)(TrappedError(location));
  }
}

template <class Body>
void Trap(const char* location, Body&& body) {
  Trap(location, std::forward<Body>(body), [](const TrappedError& error) { error.Report(); });
}

}  // namespace korvex
