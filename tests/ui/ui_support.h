// How tests use a window: as a user would, through the events of its controls.
#pragma once

#include <gmock/gmock.h>
#include <wx/app.h>
#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/listbox.h>
#include <wx/modalhook.h>
#include <wx/radiobut.h>
#include <wx/window.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "ui/form_helpers.h"

namespace korvex {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The descendant of that name; fails the test when there is none or it is of another class.
template <class Control>
Control& Find(wxWindow& form, const std::string& name) {
  auto* control = dynamic_cast<Control*>(wxWindow::FindWindowByName(ToWx(name), &form));
  if (!control) {
    ADD_FAILURE() << "no control " << name;
    std::abort();
  }
  return *control;
}

// What a click or a key sends when it reaches the control, which must be enabled and visible.
void Send(wxWindow& control, wxEventType type, int number = 0);
inline void Click(wxWindow& form, const std::string& button) {
  Send(Find<wxButton>(form, button), wxEVT_BUTTON);
}
// Selects an option by a click on it.
void Choose(wxWindow& form, const std::string& option);
// The names in a list box, in its order.
std::vector<std::string> Items(wxWindow& form, const std::string& list);

// Chooses an entry of a menu, both named without their access keys; it must be enabled.
void ChooseMenu(wxFrame& window, const std::string& menu, const std::string& entry);

// Serves what is waiting until the condition holds; fails the test after ten seconds.
void WaitUntil(const std::function<bool()>& condition);
// Serves what is waiting now.
void ServeEvents();

// Answers the modal dialogs that are ours. Each is driven by the oldest step that is left; one that
// nobody expects fails the test and is cancelled.
class ModalDriver : public wxModalDialogHook {
 public:
  using Step = std::function<void(wxDialog&)>;

  ModalDriver() { Register(); }
  ~ModalDriver() override;

  void Expect(Step step) { steps_.push_back(std::move(step)); }

 protected:
  int Enter(wxDialog* dialog) override;

 private:
  std::deque<Step> steps_;
};

}  // namespace korvex
