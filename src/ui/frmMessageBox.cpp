#include "ui/frmMessageBox.h"

#include <wx/artprov.h>
#include <wx/dcclient.h>
#include <wx/display.h>
#include <wx/textbuf.h>
#include <wx/tokenzr.h>

#include <algorithm>

#include "platform/desktop.h"
#include "platform/error.h"
#include "platform/services.h"
#include "ui/accessible_names.h"
#include "ui/form_helpers.h"

namespace korvex {
namespace {

// The form as designed, in twips. Its size counts the window's frame in; a margin runs around
// everything on it.
constexpr int kFrameWidth = 100;
constexpr int kFrameHeight = 350;
constexpr int kMargin = 100;
constexpr int kFormWidth = 6600;
constexpr TwipBox kIcon{150, 100, 480, 480};
constexpr TwipBox kButton{50, 950, 1200, 375};
constexpr int kMessageLeft = 850;
constexpr int kMessageTop = 200;
// Of the screen's work area: the rest is for the frame that the desktop puts around a window.
constexpr double kUsableScreen = 0.9;

void Check(const ButtonMessage& message) {
  if (message.icon < 0 || message.icon > kMessageIcons) {
    throw Error(error_number::kInvalidCall,
                "There is no icon number " + std::to_string(message.icon) + ".", "frmMessageBox");
  }
  if (message.buttons.empty()) {
    throw Error(error_number::kSubscript, "A message box needs a button.", "frmMessageBox");
  }
  const auto count = static_cast<int>(message.buttons.size());
  if (message.default_button < 0 || message.default_button >= count) {
    throw Error(error_number::kSubscript,
                "The default button is none of the " + std::to_string(count) + " buttons.",
                "frmMessageBox");
  }
}

}  // namespace

frmMessageBox::frmMessageBox(wxWindow* owner)
    : wxDialog(owner, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE,
               "frmMessageBox"),
      twips_(*this),
      lblButtons_(
          new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, "lblButtons")),
      lblMessage_(
          new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, "lblMessage")),
      imgIcon_(new IconImage(this, "imgIcon")) {
  SetIcons(AppIcons());
  lblButtons_->Hide();
  lblMessage_->Hide();
  imgIcon_->Hide();
  imgIcon_->SetCanFocus(false);
  AddButton();
  SetEscapeId(wxID_NONE);
  Bind(wxEVT_CLOSE_WINDOW, &frmMessageBox::OnClose, this);
  Bind(wxEVT_CHAR_HOOK, &frmMessageBox::OnKey, this);
}

std::string frmMessageBox::ShowMsgBox(const ButtonMessage& message) {
  Check(message);
  DisableCloseButton();
  has_icon_ = message.icon != 0;
  imgIcon_->SetIcon(message.icon);
  Run(message);
  return message.buttons[pressed_];
}

BoxAnswer frmMessageBox::ShowPlain(const PlainMessage& message) {
  closable_ = true;
  has_icon_ = message.icon != BoxIcon::kNone;
  if (has_icon_) {
    imgIcon_->SetPicture(wxArtProvider::GetBitmapBundle(
        message.icon == BoxIcon::kCritical ? wxART_ERROR : wxART_WARNING, wxART_MESSAGE_BOX));
  }
  ButtonMessage shown;
  shown.prompt = message.text;
  shown.title = message.title;
  shown.sound = 0;
  shown.buttons = {message.buttons == BoxButtons::kRetryCancel ? "&Retry" : "OK"};
  if (message.buttons != BoxButtons::kOk) shown.buttons.push_back("Cancel");
  // A question with an icon warns of a loss.
  if (message.buttons == BoxButtons::kOkCancel && has_icon_) shown.default_button = 1;
  Run(shown);
  if (message.buttons == BoxButtons::kOk) return BoxAnswer::kOk;
  if (pressed_ == 1) return BoxAnswer::kCancel;
  return message.buttons == BoxButtons::kRetryCancel ? BoxAnswer::kRetry : BoxAnswer::kOk;
}

void frmMessageBox::Run(const ButtonMessage& message) {
  SetTitle(ToWx(message.title));
  text_ = wxTextBuffer::Translate(ToWx(message.prompt), wxTextFileType_Unix);
  while (cmdMain_.size() < message.buttons.size()) AddButton();
  for (std::size_t i = 0; i < cmdMain_.size(); ++i) {
    cmdMain_[i]->SetLabel(ToWx(message.buttons[i]));
  }
  Place(LayOut(message));
  NameControls(*this);
  SetAccessibleMessage(*this, FromWx(text_));

  wxButton* chosen = cmdMain_[static_cast<std::size_t>(message.default_button)];
  chosen->SetDefault();
  // Platforms that give the focus to the first control shall find this one.
  chosen->MoveBeforeInTabOrder(GetChildren().GetFirst()->GetData());
  chosen->SetFocus();
  imgIcon_->Show(has_icon_);
  if (Sound* sound = Platform().sound) PlayMessageSound(*sound, message.sound);
  CentreWhenShown(*this);
  ShowModal();
}

void frmMessageBox::cmdMain_Click(std::size_t index) {
  pressed_ = index;
  EndModal(wxID_OK);
}

// The text is read-only; a change that gets through (by drag and drop) is undone once it is
// complete.
void frmMessageBox::txtMessage_Change(wxCommandEvent&) {
  CallAfter([this] {
    if (txtMessage_->GetValue() != text_) txtMessage_->ChangeValue(text_);
  });
}

// The text box would swallow Enter.
void frmMessageBox::OnKey(wxKeyEvent& event) {
  const int key = event.GetKeyCode();
  if (closable_ && key == WXK_ESCAPE) {
    Close();
    return;
  }
  const bool is_enter = key == WXK_RETURN || key == WXK_NUMPAD_ENTER;
  if (is_enter && txtMessage_->HasFocus()) {
    wxCommandEvent click(wxEVT_BUTTON, GetDefaultItem()->GetId());
    GetDefaultItem()->GetEventHandler()->ProcessEvent(click);
  } else {
    event.Skip();
  }
}

// The end of the program or of the session cannot be refused.
void frmMessageBox::OnClose(wxCloseEvent& event) {
  if (closable_) {
    cmdMain_Click(cmdMain_.size() - 1);
  } else if (event.CanVeto()) {
    event.Veto();
  } else {
    EndModal(wxID_CANCEL);
  }
}

void frmMessageBox::DisableCloseButton() {
  if (WindowSystem* system = Platform().window_system) {
    system->EnableCloseButton(GetHandle(), false);
  } else {
    EnableCloseButton(false);
  }
}

void frmMessageBox::AddButton() {
  const std::size_t index = cmdMain_.size();
  auto* button = new wxButton(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0,
                              wxDefaultValidator, wxString::Format("cmdMain%zu", index));
  button->Bind(wxEVT_BUTTON, [this, index](wxCommandEvent&) { cmdMain_Click(index); });
  cmdMain_.push_back(button);
}

MessageBoxDesign frmMessageBox::Design() const {
  MessageBoxDesign design;
  design.form_width = kFormWidth;
  design.first_button = kButton;
  const int usual_height = twips_.FromPixels(cmdMain_[0]->GetBestSize().y);
  design.first_button.height = std::max(kButton.height, usual_height);
  design.form_height = design.first_button.Bottom() + kBelowButtons;
  design.message_left = kMessageLeft;
  design.message_top = kMessageTop;
  return design;
}

MessageBoxLayout frmMessageBox::LayOut(const ButtonMessage& message) {
  const wxWindow* near = GetParent() ? GetParent() : this;
  const wxSize screen = wxDisplay(near).GetClientArea().GetSize() * kUsableScreen;
  MessageBoxContent content;
  content.caption_widths = CaptionWidths(message.buttons);
  content.has_icon = has_icon_;
  content.message_height = [this](int width) { return MessageHeight(width); };
  content.most_width = twips_.FromPixels(screen.x) + kFrameWidth - 2 * kMargin;
  content.most_height = twips_.FromPixels(screen.y) + kFrameHeight - 2 * kMargin;
  return LayOutMessageBox(Design(), content);
}

// Of each caption, and of what the platform's buttons need around theirs beyond the space that the
// layout gives them.
std::vector<int> frmMessageBox::CaptionWidths(const std::vector<std::string>& captions) {
  std::vector<int> widths;
  for (std::size_t i = 0; i < captions.size(); ++i) {
    // Measured on a hidden label, in the font of the form.
    lblButtons_->SetLabel(ToWx(captions[i]));
    const int label = twips_.FromPixels(lblButtons_->GetBestSize().x);
    const int button = twips_.FromPixels(cmdMain_[i]->GetBestSize().x);
    widths.push_back(std::max(label, button - kCaptionPadding));
  }
  return widths;
}

int frmMessageBox::MessageHeight(int width) const {
  const int line_height = lblMessage_->GetCharHeight();
  // The text box has inner margins, and measures text a little differently.
  const int usable = twips_.ToPixels(width) - 2 * lblMessage_->GetCharWidth();
  int height = 0;
  wxStringTokenizer paragraphs(text_, "\n", wxTOKEN_RET_EMPTY_ALL);
  wxClientDC dc(lblMessage_);
  while (paragraphs.HasMoreTokens()) {
    const wxString paragraph = paragraphs.GetNextToken();
    wxArrayInt ends;
    dc.GetPartialTextExtents(paragraph, ends);
    const int lines = WrappedLines(paragraph.ToStdWstring(), {ends.begin(), ends.end()}, usable);
    height += lines * std::max(line_height, dc.GetTextExtent(paragraph).y);
  }
  return twips_.FromPixels(height + 2);
}

void frmMessageBox::Place(const MessageBoxLayout& layout) {
  SetClientSize(twips_.ToPixels(layout.form_width - kFrameWidth + 2 * kMargin),
                twips_.ToPixels(layout.form_height - kFrameHeight + 2 * kMargin));
  for (std::size_t i = 0; i < cmdMain_.size(); ++i) Place(*cmdMain_[i], layout.buttons[i]);
  Place(*imgIcon_, kIcon);
  Place(*lblMessage_, layout.message);

  const long bar = layout.scrolls ? 0 : wxTE_NO_VSCROLL;
  txtMessage_ = new wxTextCtrl(this, wxID_ANY, text_, wxDefaultPosition, wxDefaultSize,
                               wxTE_MULTILINE | wxTE_READONLY | wxBORDER_NONE | bar,
                               wxDefaultValidator, "txtMessage");
  txtMessage_->SetBackgroundColour(GetBackgroundColour());
  txtMessage_->SetForegroundColour(GetForegroundColour());
  txtMessage_->Bind(wxEVT_TEXT, &frmMessageBox::txtMessage_Change, this);
  Place(*txtMessage_, layout.message);
}

void frmMessageBox::Place(wxWindow& control, const TwipBox& box) const {
  control.SetSize(twips_.ToPixels(box.left + kMargin), twips_.ToPixels(box.top + kMargin),
                  twips_.ToPixels(box.width), twips_.ToPixels(box.height));
}

}  // namespace korvex
