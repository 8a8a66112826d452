// The main window: the user chooses what to process, starts and stops a run and watches it, and
// reaches options, help, and the deletion of all settings.
#pragma once

#include <wx/button.h>
#include <wx/frame.h>
#include <wx/gauge.h>
#include <wx/menu.h>
#include <wx/radiobut.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/timer.h>
#include <wx/utils.h>
#include <wx/weakref.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/MainRun.h"
#include "ui/FileChooser.h"
#include "ui/folder_contents.h"
#include "ui/frame_panel.h"
#include "ui/last_report.h"

namespace korvex {

class frmMain : public wxFrame, private RunView {
 public:
  // `show_afresh` opens a new main window in place of this one, after the settings were deleted.
  explicit frmMain(std::function<void()> show_afresh);

  // The folder that the file chooser shows.
  std::string ProcessingFolder() const { return FileChooser_->Path(); }

  // Opens a folder, whose sub-folders are to be processed then, or selects files of one folder. The
  // user is told why when nothing is opened. Ignored during a run and behind a dialog.
  void OpenPaths(const std::vector<std::string>& paths);

 private:
  // The controls and where they stand, in frmMain_layout.cpp.
  void CreateMenus();
  wxMenu* ToolsMenu();
  void TakeDroppedPaths(wxWindow& window);
  void CreateControls();
  wxSizer* ModeRows();
  wxSizer* PatternRow();
  wxSizer* ProgressRow(wxWindow* form);
  void FitToControls();

  void Form_Load();
  void Form_Resize();
  void Form_Unload(wxCloseEvent& event);
  void cmdProcess_Click() { StartOrStop("frmMain.cmdProcess_Click"); }
  void mnuRun_Click() { StartOrStop("frmMain.mnuRun_Click"); }
  void mnuOptions_Click();
  void mnuRegistry_Click();
  void mnuExit_Click();
  void mnuCheck_Click();
  void mnuReport_Click();
  void mnuOutputFolder_Click();
  void mnuGoTo_Click();
  void mnuSample_Click();
  void mnuHelpHelp_Click();
  void optFiles_Click();
  void optFolders_Click();
  void txtPattern_Change();
  void Timer1_Timer();
  void FileChooser_DblClick();

  void StartOrStop(const char* location);
  void Start(const RunOptions& options);
  void OpenFiles(const std::string& folder, const std::vector<std::string>& names);
  void OpenFolder(const std::string& folder);
  // Goes on with counting what a run would read, for a moment. True while there is more to count.
  bool CountOn();
  void CountAfresh();
  void ShowCounted();
  void PaintNow();
  bool HasSelection() const;
  void StoreSelectedMode();
  // Lists no file while sub-folders are processed: there is nothing to choose from.
  void ListFilesOfMode();
  std::string TypedPattern() const;
  // Puts the last valid pattern in the place of one that is typed half, or wrong.
  void RestorePattern();
  // Opens the folder, or the nearest one above it that can be opened; says what was wrong with it.
  std::string ShowFolder(const std::string& folder);
  RunSelection Selection() const;
  void SetProcessCaption(const wxString& caption);
  void EnableForRun(bool enable);

  // The engine's events and the run's state.
  void ErrorMessage(const std::string& text) override;
  void Message(const std::string& text) override;
  void ProcessedFile() override;
  void EnterRunning() override;
  void LeaveRunning() override;
  void SetMessage(const std::string& text) override;
  void SetProgress(std::int32_t value, std::int32_t maximum) override;
  void RunEnded(const RunRecord& record) override;

  std::function<void()> show_afresh_;
  MainRun run_{*this};
  bool run_on_stack_ = false;  // from the first check of a run to its last message
  bool running_ = false;       // the window shows the running state
  bool starting_ = false;      // it does not show it yet: what is clicked was meant for before
  std::optional<wxBusyCursor> busy_;  // until it shows it
  wxWeakRef<wxWindow> focus_before_run_;
  FolderContents contents_;  // of the processing folder, while sub-folders are processed
  std::string counted_folder_;
  std::string valid_pattern_;  // the last one that was typed
  bool objecting_ = false;     // to what is typed as a pattern
  LastReport last_report_;
  wxSize design_size_;   // inside its frame, like the next one
  wxSize refused_size_;  // the size last objected to; none once the design size is back

  FramePanel* fraCurrentMode_;
  wxRadioButton* optFolders_;
  wxRadioButton* optFiles_;
  wxStaticText* lblFolder_;
  FramePanel* fraMain_;
  FileChooser* FileChooser_;
  wxTextCtrl* txtPattern_;
  wxGauge* prg_;
  wxButton* cmdProcess_;
  wxStaticText* lblMessages_;
  wxTimer Timer1_;
};

}  // namespace korvex
