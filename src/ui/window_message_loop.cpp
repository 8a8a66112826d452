#include "ui/window_message_loop.h"

#include <wx/app.h>

#include "platform/raised_flag.h"

namespace korvex {

void WindowMessageLoop::Yield() {
  if (serving_) return;
  const RaisedFlag serving(serving_);
  wxTheApp->Yield(true);
}

}  // namespace korvex
