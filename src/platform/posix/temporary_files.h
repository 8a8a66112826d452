// Temporary files of the program, and the removal of those that a killed program has
// left.
//
// Their names are PREFIX, a mark of this machine, "-" and random digits. The program that made
// one holds a lock (flock) on it, which the system releases when the process ends, even when it is
// killed: a file that is not locked has no owner any more. The mark keeps machines that share a
// disk apart, since not every disk tells one machine about the locks of another.
#pragma once

#include <signal.h>

#include <string>
#include <string_view>

#include "platform/posix/posix_io.h"

namespace korvex {

// A new name in every call.
std::string TemporaryName(std::string_view prefix);

// Locks what has just been made under `path`. False when a program that looks for leftovers was
// quicker: then it is gone, or will be in a moment. Also true where the file system has no such
// locks; there nothing is ever taken for a leftover.
bool HoldTemporary(int fd, const std::string& path);

// Removes what this user's programs have left in the folder under names of that prefix. Never
// fails: what cannot be removed stays.
void RemoveLeftovers(const std::string& folder, std::string_view prefix);

// Holds back the signals that end a program, so that it does not leave a half-done step behind.
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
  // The signals that were held back before.
  sigset_t former_;
};

}  // namespace korvex
