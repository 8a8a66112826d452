// How the main window gets to what is to be processed, other than by its file chooser.

#include <wx/dialog.h>
#include <wx/textctrl.h>
#include <wx/textdlg.h>

#include <string>
#include <vector>

#include "errors/trap.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "files/folder_paths.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "settings/basSettings.h"
#include "text/text.h"
#include "ui/accessible_names.h"
#include "ui/file_pattern.h"
#include "ui/form_helpers.h"
#include "ui/frmMain.h"
#include "ui/sample_campaign.h"

namespace korvex {
namespace {

bool DialogIsOpen() {
  for (const wxWindow* window : wxTopLevelWindows) {
    const auto* dialog = dynamic_cast<const wxDialog*>(window);
    if (dialog && dialog->IsModal()) return true;
  }
  return false;
}

// What a user has typed or pasted as a path: "~" is the home folder on Linux, and file managers put
// quotes around what they copy.
std::string TypedPath(std::string text, const std::string& current_folder) {
  const FileSystem& files = *Platform().files;
  text = TrimBlanks(text);
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"')
    text = text.substr(1, text.size() - 2);
  const char separator = files.Separator();
  if (separator == '/' && (text == "~" || text.starts_with("~/")))
    text.replace(0, 1, files.DefaultFolder());
  const bool is_full = text.starts_with(separator) || !files.DriveName(text).empty();
  return files.AbsolutePath(is_full ? text : JoinPath(current_folder, text));
}

}  // namespace

void frmMain::mnuOutputFolder_Click() {
  Trap("frmMain.mnuOutputFolder_Click", [&] {
    const FileSystem& files = *Platform().files;
    const std::string folder =
        basSettings::OutputFile().empty()
            ? std::string()
            : ParentFolder(files, files.AbsolutePath(basSettings::OutputFullName()));
    if (folder.empty()) {
      Platform().dialogs->ShowPlain(
          {.text = "No output file has been named yet: File > Options..., General Options."});
    } else if (!files.FolderExists(folder)) {
      Platform().dialogs->ShowPlain({.text = "The folder of the output file is not there.",
                                     .icon = BoxIcon::kExclamation,
                                     .cause = Shown(folder)});
    } else {
      ShellOpen(folder);
    }
  });
}

void frmMain::mnuGoTo_Click() {
  Trap(
      "frmMain.mnuGoTo_Click",
      [&] {
        wxTextEntryDialog dialog(this, "Path of the folder:", "Go to Folder",
                                 ToWx(FileChooser_->Path()));
        auto& box = dynamic_cast<wxTextCtrl&>(*FindWindowByName(wxTextCtrlNameStr, &dialog));
        SetAccessibleName(box, "Path of the folder");
        // What is typed takes its place. Not before the dialog shows, which puts the text in.
        dialog.CallAfter([&box] { box.SelectAll(); });
        const wxSize as_designed = dialog.GetClientSize();
        dialog.SetClientSize(GetSize().x * 9 / 10, as_designed.y);  // room for most of a path
        dialog.CentreOnParent();
        if (dialog.ShowModal() != wxID_OK || dialog.GetValue().Trim().empty()) return;
        const std::string path = TypedPath(FromWx(dialog.GetValue()), FileChooser_->Path());
        const FileSystem& files = *Platform().files;
        // The path of a file stands for the folder that it lies in.
        FileChooser_->SetPath(files.FileExists(path) ? ParentFolder(files, path) : path);
      },
      [&](const TrappedError& error) { FileChooser_->ShowFailure(error); });
}

void frmMain::mnuSample_Click() {
  Trap(
      "frmMain.mnuSample_Click",
      [&] {
        const std::string samples = sample_campaign::InstalledFolder();
        const PlainMessage question{
            .text =
                "The sample campaign has columns and an output file of its own. They will take "
                "the place of those in your options. Would you like to open it?",
            .buttons = BoxButtons::kOkCancel,
            .icon = BoxIcon::kExclamation};
        if (sample_campaign::WouldReplaceSettings(samples) &&
            Platform().dialogs->ShowPlain(question) != BoxAnswer::kOk) {
          return;
        }
        const std::string folder = sample_campaign::Copy(samples);
        OpenFolder(folder);
        sample_campaign::TakeSettings(samples);
        SetMessage("The sample campaign is ready to run: " + ShortenPath(folder, false));
      },
      [&](const TrappedError& error) { FileChooser_->ShowFailure(error); });
}

void frmMain::OpenPaths(const std::vector<std::string>& paths) {
  Trap(
      "frmMain.OpenPaths",
      [&] {
        if (run_on_stack_ || DialogIsOpen() || paths.empty()) return;
        const FileSystem& files = *Platform().files;
        const std::string first = files.AbsolutePath(paths.front());
        if (paths.size() == 1 && !files.FileExists(first)) return OpenFolder(first);
        const std::string folder = ParentFolder(files, first);
        std::vector<std::string> names;
        for (const std::string& path : paths) {
          const std::string full = files.AbsolutePath(path);
          if (!IsSameName(ParentFolder(files, full), folder) || files.FolderExists(full)) {
            Platform().dialogs->ShowPlain(
                {.text = "KORVEX opens one folder, or files that lie in one folder.",
                 .cause = "Nothing was opened."});
            return;
          }
          names.push_back(SharedFileSys().GetFileTitle(full, false));
        }
        OpenFiles(folder, names);
      },
      [&](const TrappedError& error) { FileChooser_->ShowFailure(error); });
}

void frmMain::OpenFolder(const std::string& folder) {
  FileChooser_->SetPath(folder);
  optFolders_->SetValue(true);
  optFolders_Click();
}

void frmMain::OpenFiles(const std::string& folder, const std::vector<std::string>& names) {
  FileChooser_->SetPath(folder);
  RestorePattern();
  valid_pattern_ = WidenedPattern(TypedPattern(), names);
  txtPattern_->ChangeValue(ToWx(valid_pattern_));
  optFiles_->SetValue(true);
  optFiles_Click();
  const std::vector<std::string> missing = FileChooser_->SelectFiles(names);
  if (missing.empty()) return;
  Platform().dialogs->ShowPlain(
      {.text = "Not all of these files could be selected.",
       .icon = BoxIcon::kExclamation,
       .cause = "Not in the folder, or hidden: " + Shown(Join(missing, ", "))});
}

}  // namespace korvex
