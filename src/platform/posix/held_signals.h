// Keeps the signals that end a program waiting, so that it does not leave a half-done step behind.
#pragma once

#include <signal.h>

namespace korvex {

class HeldSignals {
 public:
  HeldSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) sigaddset(&ending, number);
    pthread_sigmask(SIG_BLOCK, &ending, &former_);
  }
  // What came meanwhile arrives now.
  ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

 private:
  sigset_t former_;
};

}  // namespace korvex
