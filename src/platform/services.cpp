#include "platform/services.h"

#include "platform/error.h"

namespace korvex {

const char kProgramVersion[] = KORVEX_VERSION;

namespace {
// The engine, its handlers and the windows all run on one thread: no lock is needed.
const Services* installed = nullptr;
}  // namespace

const Services& Platform() {
  if (!installed) throw Error(error_number::kObjectNotSet);
  return *installed;
}

InstalledServices::InstalledServices(const Services& services)
    : services_(services), former_(installed) {
  installed = &services_;
}

InstalledServices::~InstalledServices() {
  installed = former_;
}

}  // namespace korvex
