// The program's own message box: any captions on its buttons, a numbered icon, a sound, and a text
// that can be selected and copied. Nothing but one of its buttons closes it. It also shows plain
// messages where the desktop does not do so well enough.
#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <cstddef>
#include <string>
#include <vector>

#include "platform/dialogs.h"
#include "ui/form_helpers.h"
#include "ui/message_box_layout.h"
#include "ui/message_icons.h"

namespace korvex {

// One instance serves one message.
class frmMessageBox : public wxDialog {
 public:
  explicit frmMessageBox(wxWindow* owner);

  // Shows the message until a button is pressed and returns the caption of that button as it was
  // given, with its "&". Error 5 for an icon that does not exist, error 9 for a default button that
  // does not, and when there are no buttons.
  std::string ShowMsgBox(const ButtonMessage& message);

  // Shows a plain message, for a desktop whose own message box has neither icons nor one weight of
  // letters. This one can be closed without a button, which answers as its last button does.
  BoxAnswer ShowPlain(const PlainMessage& message);

 private:
  void Run(const ButtonMessage& message);
  void cmdMain_Click(std::size_t index);
  void txtMessage_Change(wxCommandEvent& event);
  void OnKey(wxKeyEvent& event);
  void OnClose(wxCloseEvent& event);

  void DisableCloseButton();
  void AddButton();
  MessageBoxDesign Design() const;
  MessageBoxLayout LayOut(const ButtonMessage& message);
  std::vector<int> CaptionWidths(const std::vector<std::string>& captions);
  int MessageHeight(int width) const;
  void Place(const MessageBoxLayout& layout);
  void Place(wxWindow& control, const TwipBox& box) const;

  Twips twips_;
  wxString text_;
  bool closable_ = false;
  bool has_icon_ = false;
  std::size_t pressed_ = 0;
  wxStaticText* lblButtons_;
  wxStaticText* lblMessage_;
  IconImage* imgIcon_;
  std::vector<wxButton*> cmdMain_;
  wxTextCtrl* txtMessage_ = nullptr;
};

}  // namespace korvex
