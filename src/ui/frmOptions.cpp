#include "ui/frmOptions.h"

#include <wx/filedlg.h>

#include "errors/trap.h"
#include "files/basGeneral.h"
#include "platform/dialogs.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "settings/basSettings.h"
#include "structure/clsArray.h"
#include "text/text.h"
#include "ui/clsControls.h"
#include "ui/form_helpers.h"
#include "ui/option_choices.h"

namespace korvex {
namespace {

constexpr int kDiscrepancyIcon = 17;

bool MayTakePlaceOf(const std::string& file) {
  if (!Platform().files->FileExists(file)) return true;
  return Platform().dialogs->ShowPlain({"The file \"" + file + "\" exists. Replace it?",
                                        BoxButtons::kOkCancel, BoxIcon::kExclamation}) ==
         BoxAnswer::kOk;
}

// Asks before replacing a file by itself: the platform's dialog would ask about the name as typed,
// before the chosen ending is added.
std::string AskWithFileDialog(wxWindow& owner, std::string shown) {
  for (;;) {
    wxFileDialog dialog(
        &owner, "Please choose the output file", ToWx(SharedFileSys().GetFilePath(shown, false)),
        ToWx(SharedFileSys().GetFileTitle(shown, false)), kOutputFilters, wxFD_SAVE);
    const int offered = OutputFilterOf(shown);
    dialog.SetFilterIndex(offered);
    if (dialog.ShowModal() != wxID_OK) return "";
    shown = OutputFileChosen(FromWx(dialog.GetPath()), offered, dialog.GetFilterIndex());
    if (MayTakePlaceOf(shown)) return shown;
  }
}

// Completes a name without a folder by the current folder, which may be another one when the name
// is used. A text that names no file is refused when it is used.
std::string WithFolder(const std::string& name) {
  const FileSystem& files = *Platform().files;
  if (TrimBlanks(name).empty() || name.ends_with(files.Separator())) return name;
  return files.AbsolutePath(name);
}

ColumnList ColumnsOf(const wxListBox& list) {
  ColumnList columns;
  for (const wxString& name : list.GetStrings()) columns.names.push_back(FromWx(name));
  if (const int selected = list.GetSelection(); selected != wxNOT_FOUND) {
    columns.selected = static_cast<std::size_t>(selected);
  }
  return columns;
}

void ShowSelection(wxListBox& list, const ColumnList& columns) {
  if (columns.selected) list.SetSelection(static_cast<int>(*columns.selected));
}

std::optional<clsArray::Values> ItemsOf(const wxListBox& list) {
  clsArray items;
  items.AddTexts(ColumnsOf(list).names);
  return items.Items();
}

}  // namespace

frmOptions::AskForFile frmOptions::ask_for_output_file = AskWithFileDialog;

void frmOptions::ShowOptions(const std::string& parent_path, const std::vector<std::string>& files,
                             wxWindow* owner, ListedFolders& folders) {
  Trap("frmOptions.ShowOptions", [&] {
    frmOptions dialog(owner);
    dialog.LoadGeneralOptions();
    dialog.LoadStructure(parent_path, files, folders);
    // Last: the names in the lists decide how wide it opens.
    dialog.OpenLarger();
    dialog.ShowModal();
  });
}

void frmOptions::Form_Load() {
  Trap("frmStructure.Form_Load", [&] { SetTitle(std::string(kProgramTitle) + " - Options"); });
}

void frmOptions::BindEvents() {
  const auto click = [this](wxWindow* control, const auto& event, void (frmOptions::*handler)()) {
    control->Bind(event, [this, handler](wxCommandEvent&) { (this->*handler)(); });
  };
  click(optOutputFileByFolder_, wxEVT_RADIOBUTTON, &frmOptions::optOutputFileByFolder_Click);
  click(optOutputFileByName_, wxEVT_RADIOBUTTON, &frmOptions::optOutputFileByName_Click);
  click(cmdBrowse_, wxEVT_BUTTON, &frmOptions::cmdBrowse_Click);
  click(chkErrMail_, wxEVT_CHECKBOX, &frmOptions::chkErrMail_Click);
  click(cmdToKeys_, wxEVT_BUTTON, &frmOptions::cmdToKeys_Click);
  click(cmdFromKeys_, wxEVT_BUTTON, &frmOptions::cmdFromKeys_Click);
  click(cmdToOutput_, wxEVT_BUTTON, &frmOptions::cmdToOutput_Click);
  click(cmdFromOutput_, wxEVT_BUTTON, &frmOptions::cmdFromOutput_Click);
  click(cmdSampleFile_, wxEVT_BUTTON, &frmOptions::cmdSampleFile_Click);
  click(cmdOK_, wxEVT_BUTTON, &frmOptions::cmdOK_Click);
  cmdSampleFile_->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    ShowSampleName();
    event.Skip();
  });
  Bind(wxEVT_CHAR_HOOK, &frmOptions::OnKey, this);
}

// Without a button for it, Esc would do nothing.
void frmOptions::OnKey(wxKeyEvent& event) {
  if (event.GetKeyCode() == WXK_ESCAPE) {
    Close();
  } else {
    event.Skip();
  }
}

// Selecting an option here has the effects of a click on it.
void frmOptions::LoadGeneralOptions() {
  const std::string method = basSettings::OutputFileMethod();
  if (method == basSettings::kByConstantName) {
    optOutputFileByName_->SetValue(true);
    optOutputFileByName_Click();
    optOutputFileByName_->SetFocus();
  } else if (method == basSettings::kByFolder) {
    optOutputFileByFolder_->SetValue(true);
    optOutputFileByFolder_Click();
    optOutputFileByFolder_->SetFocus();
  } else {
    optOutputFileUnknown_->SetValue(true);
  }
  (basSettings::AutoReplaceOutputFiles() ? optAutoReplaceTrue_ : optAutoReplaceFalse_)
      ->SetValue(true);
  // Both names show, whichever method is stored; a click shows only the name of its own.
  txtOutputFile_.Show(basSettings::OutputFullName());
  txtFilename_.Show(basSettings::OutputFile());
  chkLaunchOutputFile_->SetValue(basSettings::LaunchOutputFileNumber() != 0);
  const bool send_mail = basSettings::SendEmailOnError();
  chkErrMail_->SetValue(send_mail);
  txtEmailAddress_->ChangeValue(ToWx(basSettings::ErrorEmailAddress()));
  EnableFrame(*txtEmailAddress_, send_mail);
}

void frmOptions::LoadStructure(const std::string& parent_path,
                               const std::vector<std::string>& files, ListedFolders& folders) {
  // Tells the user what is wrong with the sample. The dialog opens in any case: most of its options
  // need no sample.
  structure_.Constructor(parent_path, files, nullptr, &folders);
  LoadStructureLists();
  if (structure_.Discrepancy()) WarnOfDiscrepancy();
  const std::string sample = structure_.SampleFileUsed(false);
  cmdSampleFile_->SetToolTip(ToWx(sample));
  ShowSampleName();
  cmdSampleFile_->Enable(!sample.empty());
}

void frmOptions::LoadStructureLists() {
  const std::vector<std::string> available = structure_.AvailableColsArray();
  cboDataCol_->Clear();
  SharedControls().ArrayToList(*cboDataCol_, available);
  lstAvailableCols_->Clear();
  SharedControls().ArrayToList(*lstAvailableCols_, available);
  lstOutputColumns_->Clear();
  SharedControls().ArrayToList(*lstOutputColumns_, structure_.OutputColsArray());
  lstKeyColumns_->Clear();
  SharedControls().ArrayToList(*lstKeyColumns_, structure_.KeyColsArray());
  SharedControls().SelectInList(*cboDataCol_, structure_.DataColumn());
}

void frmOptions::WarnOfDiscrepancy() const {
  int default_button = 0;
  ShowMessageBox(
      std::string("File format does not correspond to last settings saved. Please make sure the "
                  "settings are as desired.") +
          kLineBreak + kLineBreak + "File used for format check:" + kLineBreak + kLineBreak +
          structure_.SampleFileUsed(false),
      {"OK"}, kProgramTitle, kDiscrepancyIcon, default_button, 1);
}

void frmOptions::cmdOK_Click() {
  Trap(
      "frmStructure.cmdOK_Click",
      [&] {
        // The columns first: when they are refused, the other options stay as they are stored.
        SaveSettings();
        SaveGeneralOptions();
        EndModal(wxID_OK);
      },
      [](const TrappedError& error) {
        if (!error.IsTold()) error.Report();
      });
}

void frmOptions::SaveSettings() {
  Trap(
      "frmStructure.SaveSettings",
      [&] {
        const auto output = ItemsOf(*lstOutputColumns_);
        const auto keys = ItemsOf(*lstKeyColumns_);
        structure_.SetOutputColsArray(output);
        structure_.SetKeyColsArray(keys);
        structure_.SetDataColumn(FromWx(cboDataCol_->GetStringSelection()));
      },
      [](const TrappedError& error) {
        // A list without a column has no array to store, which is the error of a wrong type.
        if (error.Number() == error_number::kTypeMismatch) {
          Platform().dialogs->ShowPlain(
              {"Please select at least one column for key columns, and output columns."});
          throw Error(error_number::kCannotPerform);
        }
        error.Report();
        throw;
      });
}

void frmOptions::SaveGeneralOptions() {
  basSettings::SetLastPath(Platform().main_window->ProcessingFolder());
  basSettings::SetLaunchOutputFileNumber(chkLaunchOutputFile_->GetValue() ? 1 : 0);
  basSettings::SetSendEmailOnError(chkErrMail_->GetValue());
  basSettings::SetErrorEmailAddress(FromWx(txtEmailAddress_->GetValue()));
  // While neither option is selected the stored method stays: another version may know it.
  if (optOutputFileByFolder_->GetValue()) {
    basSettings::SetOutputFileMethod(basSettings::kByFolder);
    basSettings::SetOutputFile(txtFilename_.Name());
  } else if (optOutputFileByName_->GetValue()) {
    basSettings::SetOutputFileMethod(basSettings::kByConstantName);
    basSettings::WriteOutputFullName(WithFolder(txtOutputFile_.Name()));
  }
  basSettings::SetAutoReplaceOutputFiles(optAutoReplaceTrue_->GetValue());
}

void frmOptions::optOutputFileByFolder_Click() {
  Trap("frmOptions.optOutputFileByFolder_Click", [&] {
    EnableFrame(*txtFilename_.box, true);
    EnableFrame(*txtOutputFile_.box, false);
    txtFilename_.Show(basSettings::OutputFile());
  });
}

void frmOptions::optOutputFileByName_Click() {
  Trap("frmOptions.optOutputFileByName_Click", [&] {
    EnableFrame(*txtFilename_.box, false);
    EnableFrame(*txtOutputFile_.box, true);
    txtOutputFile_.Show(basSettings::OutputFullName());
  });
}

void frmOptions::cmdBrowse_Click() {
  Trap("frmOptions.cmdBrowse_Click", [&] {
    const std::string chosen = ask_for_output_file(*this, txtOutputFile_.Name());
    const std::string_view name = TrimBlanks(chosen);
    if (name.empty()) return;
    // Choosing a file also selects the option for a constant name.
    if (!optOutputFileByName_->GetValue()) {
      optOutputFileByName_->SetValue(true);
      optOutputFileByName_Click();
    }
    txtOutputFile_.Show(std::string(name));
  });
}

void frmOptions::chkErrMail_Click() {
  Trap("frmOptions.chkErrMail_Click",
       [&] { EnableFrame(*txtEmailAddress_, chkErrMail_->GetValue()); });
}

void frmOptions::cmdSampleFile_Click() {
  Trap("frmStructure.cmdSampleFile_Click", [&] { ShellOpen(structure_.SampleFileUsed(false)); });
}

void frmOptions::cmdToKeys_Click() {
  Trap("frmStructure.cmdToKeys_Click", [&] { AddSelected(*lstKeyColumns_); });
}

void frmOptions::cmdToOutput_Click() {
  Trap("frmStructure.cmdToOutput_Click", [&] { AddSelected(*lstOutputColumns_); });
}

void frmOptions::cmdFromKeys_Click() {
  Trap("frmStructure.cmdFromKeys_Click", [&] { RemoveSelected(*lstKeyColumns_); });
}

void frmOptions::cmdFromOutput_Click() {
  Trap("frmStructure.cmdFromOutput_Click", [&] { RemoveSelected(*lstOutputColumns_); });
}

void frmOptions::AddSelected(wxListBox& list) {
  ColumnList columns = ColumnsOf(list);
  const auto position = AddToList(ColumnsOf(*lstAvailableCols_), columns);
  if (!position) return;
  // One item changes and the others stay: a list that is filled anew would scroll to its top.
  list.Insert(ToWx(columns.names[*position]), static_cast<unsigned>(*position));
  ShowSelection(list, columns);
  list.EnsureVisible(static_cast<int>(*position));
}

void frmOptions::RemoveSelected(wxListBox& list) {
  ColumnList columns = ColumnsOf(list);
  const auto position = RemoveFromList(columns);
  if (!position) return;
  list.Delete(static_cast<unsigned>(*position));
  ShowSelection(list, columns);
}

void frmOptions::NameBox::Show(const std::string& name) {
  name_ = name;
  box->ChangeValue(ToWx(name));
}

std::string frmOptions::NameBox::Name() const {
  const wxString text = box->GetValue();
  return text == ToWx(name_) ? name_ : FromWx(text);
}

}  // namespace korvex
