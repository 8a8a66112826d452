#include "ui/window_services.h"

#include <wx/app.h>
#include <wx/cursor.h>
#include <wx/dirdlg.h>
#include <wx/msgdlg.h>
#include <wx/platinfo.h>
#include <wx/textbuf.h>
#include <wx/utils.h>

#include "platform/desktop.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"
#include "ui/form_helpers.h"
#include "ui/frmMessageBox.h"

namespace korvex {
namespace {

// The window that has the focus, or the newest one that shows: another program may have the focus,
// or a dialog that is still being filled.
wxWindow* ActiveWindow() {
  wxWindow* active = wxGetTopLevelParent(wxWindow::FindFocus());
  if (active && active->IsShown()) return active;
  active = nullptr;
  for (wxWindow* window : wxTopLevelWindows) {
    if (window->IsShown()) active = window;
  }
  return active;
}

wxString Lines(const std::string& text) {
  return wxTextBuffer::Translate(ToWx(text), wxTextFileType_Unix);
}

std::string WithCause(const std::string& text, const std::string& cause) {
  return cause.empty() ? text : text + kLineBreak + kLineBreak + cause;
}

long StyleOf(const PlainMessage& message) {
  long style = message.buttons == BoxButtons::kOk ? wxOK : wxOK | wxCANCEL;
  if (message.icon == BoxIcon::kCritical) style |= wxICON_ERROR;
  if (message.icon == BoxIcon::kExclamation) style |= wxICON_WARNING;
  if (message.icon == BoxIcon::kNone) style |= wxICON_NONE;
  // A question with an icon warns of a loss.
  if (message.buttons == BoxButtons::kOkCancel && message.icon != BoxIcon::kNone) {
    style |= wxCANCEL_DEFAULT;
  }
  return style;
}

std::string Browse(const std::string& title, const std::string& start) {
  wxDirDialog dialog(ActiveWindow(), ToWx(title), ToWx(start),
                     wxDD_DEFAULT_STYLE | wxDD_DIR_MUST_EXIST);
  return dialog.ShowModal() == wxID_OK ? FromWx(dialog.GetPath()) : "";
}

// Where the desktop shows the shares of the network, as far as it does.
std::string NetworkFolder() {
  const std::string session = Platform().shell->EnvironmentVariable("XDG_RUNTIME_DIR");
  for (const std::string& folder :
       {session + "/gvfs", std::string("/media"), std::string("/mnt")}) {
    if (Platform().files->FolderExists(folder)) return folder;
  }
  return "";
}

// Takes a busy pointer away for its own lifetime. The toolkit's own class for that lacks its
// members on Windows.
class OrdinaryPointer {
 public:
  OrdinaryPointer() {
    for (; wxIsBusy(); ++depth_) wxEndBusyCursor();
  }
  ~OrdinaryPointer() {
    for (; depth_ > 0; --depth_) wxBeginBusyCursor();
  }
  OrdinaryPointer(const OrdinaryPointer&) = delete;
  OrdinaryPointer& operator=(const OrdinaryPointer&) = delete;

 private:
  int depth_ = 0;
};

}  // namespace

// Text and cause in one: where a platform takes them apart, it writes the text in large or fat
// letters. GTK has no icons for its message boxes.
BoxAnswer WindowDialogs::ShowPlain(const PlainMessage& message) {
  const OrdinaryPointer pointer;  // the user is asked, whatever was under way
  PlainMessage shown = message;
  if (shown.title.empty()) shown.title = kProgramTitle;
  shown.text = WithCause(message.text, message.cause);
  if (wxPlatformInfo::Get().GetPortId() == wxPORT_GTK) {
    return frmMessageBox(ActiveWindow()).ShowPlain(shown);
  }
  wxMessageDialog dialog(ActiveWindow(), Lines(shown.text), ToWx(shown.title), StyleOf(shown));
  if (message.buttons == BoxButtons::kRetryCancel) {
    dialog.SetOKCancelLabels("&Retry", "&Cancel");
  }
  const bool agreed = dialog.ShowModal() == wxID_OK;
  if (message.buttons == BoxButtons::kOk) return BoxAnswer::kOk;
  if (!agreed) return BoxAnswer::kCancel;
  return message.buttons == BoxButtons::kRetryCancel ? BoxAnswer::kRetry : BoxAnswer::kOk;
}

std::string WindowDialogs::ShowButtons(const ButtonMessage& message) {
  const OrdinaryPointer pointer;
  ButtonMessage shown = message;
  shown.prompt = WithCause(message.prompt, message.cause);
  return frmMessageBox(ActiveWindow()).ShowMsgBox(shown);
}

std::string WindowDialogs::BrowseForFolder(void* owner, const std::string& prompt) {
  if (WindowSystem* system = Platform().window_system)
    return system->BrowseForFolder(owner, prompt);
  return Browse(prompt, "");
}

std::string WindowDialogs::BrowseNetwork(void* owner, const std::string& title) {
  if (WindowSystem* system = Platform().window_system) return system->BrowseNetwork(owner, title);
  return Browse(title, NetworkFolder());
}

void WindowMessageLoop::Yield() {
  // An event that is served here can ask for a yield of its own.
  if (serving_) return;
  const RaisedFlag serving(serving_);
  wxTheApp->Yield(true);
}

}  // namespace korvex
