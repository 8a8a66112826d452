#include "ui/frmOptions.h"

#include <wx/filedlg.h>

#include "errors/trap.h"
#include "files/basGeneral.h"
#include "platform/dialogs.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "settings/basSettings.h"
#include "structure/clsArray.h"
#include "text/text.h"
#include "ui/clsControls.h"
#include "ui/form_helpers.h"
#include "ui/option_choices.h"

namespace korvex {
namespace {

constexpr int kDiscrepancyIcon = 17;
constexpr char kDropColumns[] = "&Drop Columns";
constexpr char kGoBack[] = "&Go Back";
constexpr std::size_t kStructurePage = 1;

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

std::optional<clsArray::Values> ItemsOf(const ColumnListBox& list) {
  clsArray items;
  items.AddTexts(list.Columns().names);
  return items.Items();
}

// The line below a list; none when nothing is missing.
void ShowNames(wxStaticText& line, const std::vector<std::string>& names) {
  std::vector<std::string> shown;
  for (const std::string& name : names) shown.push_back(Shown(name));
  line.SetLabelText("Missing: " + ToWx(Join(shown, ", ")));
  line.SetToolTip(ToWx(Join(shown, "\n")));
  line.Show(!names.empty());
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
  click(lstAvailableCols_, wxEVT_LISTBOX_DCLICK, &frmOptions::lstAvailableCols_DblClick);
  click(cmdSampleFile_, wxEVT_BUTTON, &frmOptions::cmdSampleFile_Click);
  click(cmdOK_, wxEVT_BUTTON, &frmOptions::cmdOK_Click);
  cmdSampleFile_->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    ShowSampleName();
    event.Skip();
  });
  BindFocusEvents();
  Bind(wxEVT_CHAR_HOOK, &frmOptions::OnKey, this);
}

void frmOptions::BindFocusEvents() {
  // Some come while the dialog is destroyed.
  const auto bind = [this](wxWindow* control, const auto& event, const auto& handler) {
    control->Bind(event, [this, handler](wxFocusEvent& focus) {
      if (IsShown()) handler();
      focus.Skip();
    });
  };
  for (ColumnListBox* list : {lstKeyColumns_, lstOutputColumns_}) {
    bind(list, wxEVT_SET_FOCUS, [this, list] { SetTarget(*list); });
  }
  // Enter adds what is selected, as a click on the arrow does.
  bind(lstAvailableCols_, wxEVT_SET_FOCUS,
       [this] { (target_ == lstKeyColumns_ ? cmdToKeys_ : cmdToOutput_)->SetDefault(); });
  bind(lstAvailableCols_, wxEVT_KILL_FOCUS, [this] { cmdOK_->SetDefault(); });
  for (NameBox* name : {&txtFilename_, &txtOutputFile_}) {
    bind(name->box, wxEVT_KILL_FOCUS, [name] { name->Complete(); });
  }
}

void frmOptions::OnKey(wxKeyEvent& event) {
  const int key = event.GetKeyCode();
  const wxWindow* focus = FindFocus();
  const bool is_delete = key == WXK_DELETE || key == WXK_NUMPAD_DELETE;
  if (key == WXK_ESCAPE) {
    Close();  // without a button for it, the key would do nothing
  } else if (is_delete && focus == lstKeyColumns_) {
    cmdFromKeys_Click();
  } else if (is_delete && focus == lstOutputColumns_) {
    cmdFromOutput_Click();
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
  missing_ = structure_.Missing();
  missing_.data = structure_.DataColumn();
  ShowMissing();
  const bool only_keys = !lstKeyColumns_->IsEmpty() && lstOutputColumns_->IsEmpty();
  SetTarget(only_keys ? *lstOutputColumns_ : *lstKeyColumns_);
}

// What the lists cannot show, since they hold columns of the sample. The data column is chosen as
// it is spelled.
MissingColumns frmOptions::Missing() const {
  MissingColumns missing = missing_;
  const bool is_chosen = cboDataCol_->GetSelection() != wxNOT_FOUND;
  if (is_chosen || missing.data->empty()) missing.data.reset();
  return missing;
}

void frmOptions::ShowMissing() {
  const MissingColumns missing = Missing();
  ShowNames(*lblKeysMissing_, missing.keys);
  ShowNames(*lblOutputMissing_, missing.outputs);
  ShowNames(*lblDataMissing_,
            missing.data ? std::vector{*missing.data} : std::vector<std::string>());
  GetSizer()->SetSizeHints(this);
}

void frmOptions::WarnOfDiscrepancy() const {
  ButtonMessage message;
  message.prompt =
      std::string(
          "File format does not correspond to last settings saved. Please make sure the "
          "settings are as desired.") +
      kLineBreak + kLineBreak + "File used for format check:" + kLineBreak + kLineBreak +
      structure_.SampleFileUsed(false);
  message.buttons = {"OK"};
  message.title = kProgramTitle;
  message.icon = kDiscrepancyIcon;
  message.cause = structure_.SampleUsable() ? MissingText(structure_.Missing())
                                            : "No column could be read from a sample file.";
  Platform().dialogs->ShowButtons(message);
}

// OK stores the lists as they are shown. Without an output column it is refused and stores nothing.
bool frmOptions::MayDropMissing() const {
  const std::string text = MissingText(Missing());
  if (text.empty() || lstOutputColumns_->IsEmpty()) return true;
  ButtonMessage question;
  question.prompt =
      "The settings name columns that the sample file does not have. Drop them from the settings?";
  question.buttons = {kDropColumns, kGoBack};
  question.title = kProgramTitle;
  question.icon = kDiscrepancyIcon;
  question.default_button = 1;
  question.cause = text;
  return Platform().dialogs->ShowButtons(question) == kDropColumns;
}

void frmOptions::cmdOK_Click() {
  Trap(
      "frmStructure.cmdOK_Click",
      [&] {
        // Enter in the text box leaves it, too.
        txtFilename_.Complete();
        txtOutputFile_.Complete();
        if (!MayDropMissing()) return;
        // The columns first: when they are refused, the other options stay as they are stored.
        SaveSettings();
        SaveGeneralOptions();
        EndModal(wxID_OK);
      },
      [&](const TrappedError& error) {
        if (!error.IsTold()) error.Report();
        ShowEmptyList();
      });
}

// Where the user goes on after the refusal of an empty list.
void frmOptions::ShowEmptyList() {
  for (ColumnListBox* list : {lstOutputColumns_, lstKeyColumns_}) {
    if (!list->IsEmpty()) continue;
    tabOptions_->SetSelection(kStructurePage);
    list->SetFocus();
    SetTarget(*list);
  }
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

void frmOptions::lstAvailableCols_DblClick() {
  Trap("frmStructure.lstAvailableCols_DblClick", [&] { AddSelected(*target_); });
}

void frmOptions::SetTarget(ColumnListBox& list) {
  target_ = &list;
  lblTarget_->SetLabelText(&list == lstKeyColumns_ ? "Double-click adds to key"
                                                   : "Double-click adds to output");
}

void frmOptions::AddSelected(ColumnListBox& list) {
  SetTarget(list);
  wxArrayInt selected;
  lstAvailableCols_->GetSelections(selected);
  for (const int index : selected) {
    ColumnList columns = list.Columns();
    const wxString name = lstAvailableCols_->GetString(static_cast<unsigned>(index));
    if (const auto position = AddToList(FromWx(name), columns)) list.ShowAdded(columns, *position);
  }
}

void frmOptions::RemoveSelected(ColumnListBox& list) {
  SetTarget(list);
  ColumnList columns = list.Columns();
  if (const auto position = RemoveFromList(columns)) list.ShowRemoved(columns, *position);
}

void frmOptions::NameBox::Show(const std::string& name) {
  name_ = name;
  box->ChangeValue(ToWx(name));
}

void frmOptions::NameBox::Complete() {
  if (box->GetValue() != ToWx(name_)) Show(WithEnding(Name()));
}

std::string frmOptions::NameBox::Name() const {
  const wxString text = box->GetValue();
  return text == ToWx(name_) ? name_ : FromWx(text);
}

}  // namespace korvex
