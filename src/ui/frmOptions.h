// The options dialog: where the output workbook goes, what happens at the end of a run and on an
// error, and which columns of the input workbooks are used. Its controls hold everything until OK
// stores it; closed in any other way, it stores nothing.
#pragma once

#include <wx/accel.h>
#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/dialog.h>
#include <wx/listbox.h>
#include <wx/notebook.h>
#include <wx/radiobut.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <functional>
#include <string>
#include <vector>

#include "structure/clsStructure.h"
#include "ui/column_list_box.h"
#include "ui/frame_panel.h"

namespace korvex {

class ListedFolders;

class frmOptions : public wxDialog {
 public:
  // Shows the dialog and returns when it has closed. `parent_path` is the folder that the main
  // window shows, `files` its selected files, and `folders` what has been listed of it; the sample
  // workbook is chosen from that. Errors are reported here.
  static void ShowOptions(const std::string& parent_path, const std::vector<std::string>& files,
                          wxWindow* owner, ListedFolders& folders);

  // Asks for the full name of the output workbook, beginning with the one shown; empty when the
  // user cancels. Replaceable, because nothing but a user can drive the platform's file dialog.
  using AskForFile = std::function<std::string(wxWindow& owner, const std::string& shown)>;
  static AskForFile ask_for_output_file;

 private:
  // A text box for a file name. Bytes that are not UTF-8 do not survive the box, so the name comes
  // back as it was put in until the user changes the text.
  class NameBox {
   public:
    void Show(const std::string& name);
    std::string Name() const;
    // Gives a name that was typed without an ending its ".xls".
    void Complete();

    wxTextCtrl* box = nullptr;

   private:
    std::string name_;
  };

  explicit frmOptions(wxWindow* owner);
  void AddPage(wxWindow& page, const wxString& caption);
  void BuildOutputFile(FramePanel& frame);
  void BuildReplacing(FramePanel& frame);
  void BuildAfterwards(FramePanel& frame);
  void BuildColumns(FramePanel& frame);
  void BuildSample(FramePanel& frame);
  void OpenLarger();
  void ShowSampleName();
  void BindEvents();
  void BindFocusEvents();
  void OnKey(wxKeyEvent& event);

  void Form_Load();
  void LoadGeneralOptions();
  void LoadStructure(const std::string& parent_path, const std::vector<std::string>& files,
                     ListedFolders& folders);
  void LoadStructureLists();
  MissingColumns Missing() const;
  void ShowMissing();
  void WarnOfDiscrepancy() const;
  bool MayDropMissing() const;
  void ShowEmptyList();
  void SaveSettings();
  void SaveGeneralOptions();
  void SetTarget(ColumnListBox& list);
  void AddSelected(ColumnListBox& list);
  void RemoveSelected(ColumnListBox& list);

  void cmdOK_Click();
  void cmdSampleFile_Click();
  void cmdBrowse_Click();
  void chkErrMail_Click();
  void optOutputFileByFolder_Click();
  void optOutputFileByName_Click();
  void cmdToKeys_Click();
  void cmdToOutput_Click();
  void cmdFromKeys_Click();
  void cmdFromOutput_Click();
  void lstAvailableCols_DblClick();

  clsStructure structure_;
  MissingColumns missing_;  // when the lists were filled, with the data column of the settings
  std::vector<wxAcceleratorEntry> access_keys_;  // of the tabs

  wxNotebook* tabOptions_;
  wxRadioButton* optOutputFileUnknown_;
  wxRadioButton* optOutputFileByFolder_;
  wxRadioButton* optOutputFileByName_;
  NameBox txtFilename_;
  NameBox txtOutputFile_;
  wxButton* cmdBrowse_;
  wxRadioButton* optAutoReplaceTrue_;
  wxRadioButton* optAutoReplaceFalse_;
  wxCheckBox* chkLaunchOutputFile_;
  wxCheckBox* chkErrMail_;
  wxTextCtrl* txtEmailAddress_;
  wxListBox* lstAvailableCols_;
  wxStaticText* lblTarget_;
  ColumnListBox* lstKeyColumns_;
  wxStaticText* lblKeysMissing_;
  ColumnListBox* lstOutputColumns_;
  wxStaticText* lblOutputMissing_;
  ColumnListBox* target_ = nullptr;  // what a double click adds to: the list used last
  wxButton* cmdToKeys_;
  wxButton* cmdFromKeys_;
  wxButton* cmdToOutput_;
  wxButton* cmdFromOutput_;
  wxChoice* cboDataCol_;
  wxStaticText* lblDataMissing_;
  wxButton* cmdSampleFile_;
  wxButton* cmdOK_;
};

}  // namespace korvex
