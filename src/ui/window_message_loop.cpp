#include "ui/window_message_loop.h"

#include <wx/app.h>

namespace korvex {
namespace {

class Flag {
 public:
  explicit Flag(bool& flag) : flag_(flag) { flag_ = true; }
  ~Flag() { flag_ = false; }
  Flag(const Flag&) = delete;
  Flag& operator=(const Flag&) = delete;

 private:
  bool& flag_;
};

}  // namespace

void WindowMessageLoop::Yield() {
  if (serving_) return;
  const Flag flag(serving_);
  wxTheApp->Yield(true);
}

}  // namespace korvex
