#include "tests/ui/ui_support.h"

#include <wx/evtloop.h>
#include <wx/stopwatch.h>

namespace korvex {

void Send(wxWindow& control, wxEventType type, int number) {
  ASSERT_TRUE(control.IsEnabled()) << control.GetName().utf8_string() << " is disabled";
  ASSERT_TRUE(control.IsShownOnScreen()) << control.GetName().utf8_string() << " is hidden";
  wxCommandEvent event(type, control.GetId());
  event.SetEventObject(&control);
  event.SetInt(number);
  control.HandleWindowEvent(event);
}

void ServeEvents() {
  wxTheApp->Yield(true);
  wxTheApp->ProcessPendingEvents();
}

void WaitUntil(const std::function<bool()>& condition) {
  const wxStopWatch watch;
  while (!condition()) {
    if (watch.Time() > 10'000) {
      ADD_FAILURE() << "waited in vain";
      return;
    }
    ServeEvents();
    wxMilliSleep(1);
  }
}

ModalDriver::~ModalDriver() {
  EXPECT_TRUE(steps_.empty()) << steps_.size() << " dialogs did not appear";
}

int ModalDriver::Enter(wxDialog* dialog) {
  if (steps_.empty()) {
    ADD_FAILURE() << "unexpected dialog: " << dialog->GetTitle().utf8_string();
    return wxID_CANCEL;
  }
  const Step step = std::move(steps_.front());
  steps_.pop_front();
  wxTheApp->CallAfter([dialog, step] { step(*dialog); });
  return wxID_NONE;
}

}  // namespace korvex
