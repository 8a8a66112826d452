#include "tests/ui/ui_support.h"

#include <wx/menu.h>
#include <wx/stopwatch.h>

namespace korvex {

void Send(wxWindow& control, wxEventType type, int number) {
  ASSERT_TRUE(control.IsEnabled()) << FromWx(control.GetName()) << " is disabled";
  ASSERT_TRUE(control.IsShownOnScreen()) << FromWx(control.GetName()) << " is hidden";
  wxCommandEvent event(type, control.GetId());
  event.SetEventObject(&control);
  event.SetInt(number);
  control.HandleWindowEvent(event);
}

void Choose(wxWindow& form, const std::string& option) {
  auto& button = Find<wxRadioButton>(form, option);
  button.SetValue(true);
  Send(button, wxEVT_RADIOBUTTON, 1);
}

std::vector<std::string> Items(wxWindow& form, const std::string& list) {
  std::vector<std::string> items;
  for (const wxString& item : Find<wxListBox>(form, list).GetStrings()) {
    items.push_back(FromWx(item));
  }
  return items;
}

void ChooseMenu(wxFrame& window, const std::string& menu, const std::string& entry) {
  wxMenuBar& bar = *window.GetMenuBar();
  window.DoMenuUpdates();  // as when the user opens it
  const int id = bar.FindMenuItem(ToWx(menu), ToWx(entry));
  ASSERT_NE(id, wxNOT_FOUND) << menu << ", " << entry;
  const auto position = static_cast<std::size_t>(bar.FindMenu(ToWx(menu)));
  ASSERT_TRUE(bar.IsEnabledTop(position)) << menu << " is disabled";
  ASSERT_TRUE(bar.IsEnabled(id)) << entry << " is disabled";
  wxMenu* owner = nullptr;
  bar.FindItem(id, &owner);
  owner->SendEvent(id);
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
    ADD_FAILURE() << "unexpected dialog: " << FromWx(dialog->GetTitle());
    return wxID_CANCEL;
  }
  const Step step = std::move(steps_.front());
  steps_.pop_front();
  wxTheApp->CallAfter([dialog, step] { step(*dialog); });
  return wxID_NONE;
}

}  // namespace korvex
