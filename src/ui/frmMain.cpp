#include "ui/frmMain.h"

#include <wx/app.h>
#include <wx/settings.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "errors/clsAppLog.h"
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
#include "ui/clsControls.h"
#include "ui/form_helpers.h"
#include "ui/frmOptions.h"
#include "ui/run_summary.h"

namespace korvex {
namespace {

constexpr char kDefaultPattern[] = "*.xls";
// Matches no file: while sub-folders are processed there is nothing to select.
constexpr char kNoFilePattern[] = "bijo.bijo";
constexpr int kFolderLabelInterval = 200;  // milliseconds
constexpr char kShowReport[] = "Show Report";
constexpr std::chrono::milliseconds kCountingStep{20};
// Within this time a toolkit that paints with the refresh of the screen has painted.
constexpr int kScreenRefresh = 20;  // milliseconds

bool Confirm(const std::string& text, BoxIcon icon = BoxIcon::kNone) {
  return Platform().dialogs->ShowPlain(
             {.text = text, .buttons = BoxButtons::kOkCancel, .icon = icon}) == BoxAnswer::kOk;
}

bool IsPattern(const std::string& text) {
  return Attempt([&] { FilePattern{text}; });
}

}  // namespace

frmMain::frmMain(std::function<void()> show_afresh)
    : wxFrame(nullptr, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE | wxTAB_TRAVERSAL, "frmMain"),
      show_afresh_(std::move(show_afresh)),
      Timer1_(this) {
  CreateMenus();
  CreateControls();
  FitToControls();
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    Form_Resize();
  });
  Bind(wxEVT_CLOSE_WINDOW, &frmMain::Form_Unload, this);
  Bind(wxEVT_TIMER, [this](wxTimerEvent&) { Timer1_Timer(); });
  Bind(wxEVT_IDLE, [this](wxIdleEvent& event) {
    event.Skip();
    if (CountOn()) event.RequestMore();
  });
  FileChooser_->Looked = [this] { CountAfresh(); };
  Form_Load();
}

void frmMain::Form_Load() {
  Trap(
      "frmMain.Form_Load",
      [&] {
        design_size_ = GetClientSize();
        SetProcessCaption("&Run!");
        SetTitle(ToWx(std::string(kProgramTitle) + " " + kProgramVersion));
        txtPattern_->ChangeValue(kDefaultPattern);
        valid_pattern_ = kDefaultPattern;
        SetMessage("Ready");
        SetProgress(0, 1);
        const std::string complaint = ShowFolder(basSettings::LastPathAtStart());
        if (!complaint.empty()) SetMessage(complaint);
        // Any stored text but the one for sub-folders means files.
        optFiles_->SetValue(true);
        SharedControls().SetSelectedOption(basSettings::EverySheetRepresents(), *fraCurrentMode_,
                                           kByCaption);
        ListFilesOfMode();
        OpenAppLog();
      },
      [&](const TrappedError& error) {
        // The log opens at the end of the steps above, so it is not open yet when one of them
        // fails.
        Attempt([] { OpenAppLog(); });  // for this very error
        error.Report(std::string("An error occurred while loading.") + kLineBreak + kLineBreak +
                     "The Error has been written to a log file.");
        // The window must be usable in any case: with the default folder.
        if (!ProcessingFolder().empty()) return;
        Attempt([&] { ShowFolder(""); });
        ListFilesOfMode();
      });
  Timer1_Timer();
  Timer1_.Start(kFolderLabelInterval);
}

// A folder can exist and still refuse to be listed, so the way up goes past such folders as well,
// and in the end to the default folder. Only when nothing opens from there either is it an error.
std::string frmMain::ShowFolder(const std::string& folder) {
  const FileSystem& files = *Platform().files;
  std::string complaint;
  std::string candidate = files.AbsolutePath(folder.empty() ? files.DefaultFolder() : folder);
  for (bool from_default = folder.empty();;) {
    try {
      FileChooser_->SetPath(candidate);
      return complaint;
    } catch (const Error& error) {
      if (complaint.empty()) complaint = error.Description();
      const std::string parent = ParentFolder(files, candidate);
      if (parent.empty() && std::exchange(from_default, true)) throw;
      candidate = NearestExistingFolder(parent);
    }
  }
}

void frmMain::Form_Resize() {
  Trap("frmMain.Form_Resize", [&] {
    const wxSize size = GetClientSize();
    if (IsIconized() || IsMaximized() || size == design_size_) return;
    // Asked once only: a window manager that insists on its own size would be asked for ever.
    if (size == refused_size_) return;
    refused_size_ = size;
    CallAfter([this] {
      if (!IsIconized() && !IsMaximized()) SetClientSize(design_size_);
    });
  });
}

void frmMain::Form_Unload(wxCloseEvent& event) {
  if (run_on_stack_) {
    if (event.CanVeto()) event.Veto();
    return;  // at the end of a session, the run ends with the program
  }
  Trap(
      "frmMain.Form_Unload",
      [&] {
        Timer1_.Stop();
        AppLog().CloseFile();
        Hide();  // it lives on until the events that are under way have ended
        Destroy();
      },
      [](const TrappedError& error) { error.Report("Errors during Unload."); });
}

void frmMain::StartOrStop(const char* location) {
  Trap(location, [&] {
    if (starting_) return;
    // The flag covers more than the run itself: its checks and its last message let the user click
    // as well, and a second run must not start then.
    if (run_on_stack_) {
      run_.Stop();
    } else {
      Start({.keep_readings = true});
    }
  });
}

void frmMain::Start(const RunOptions& options) {
  const RaisedFlag on_stack(run_on_stack_);
  focus_before_run_ = FindFocus();
  busy_.emplace();
  const RunOutcome outcome = run_.Start(Selection(), options);
  busy_.reset();
  // The key that closes the message of an error may be hit twice: it must not find the button that
  // starts the same run again.
  const bool was_on_button = !focus_before_run_ || focus_before_run_ == cmdProcess_;
  if (outcome == RunOutcome::kFailed && was_on_button) FileChooser_->FocusOnFolders();
}

RunSelection frmMain::Selection() const {
  return {FileChooser_->Path(), FileChooser_->SelFullPaths()};
}

// Whether there may be something to process; the disk is not asked.
bool frmMain::HasSelection() const {
  if (optFiles_->GetValue()) return FileChooser_->SelectedCount() > 0;
  return !FileChooser_->Path().empty();
}

void frmMain::mnuOptions_Click() {
  Trap(
      "frmMain.mnuOptions_Click",
      [&] {
        const RunSelection selection = Selection();
        ListedFolders folders;
        busy_.emplace();
        CheckSelection(selection, folders);
        busy_.reset();
        frmOptions::ShowOptions(selection.folder, selection.files, this, folders);
      },
      [this](const TrappedError& error) {
        busy_.reset();
        // CheckSelection has told the user what is missing.
        if (!error.IsTold()) error.Report();
      });
}

void frmMain::mnuRegistry_Click() {
  Trap("frmMain.mnuRegistry_Click", [&] {
    if (!Confirm("This will delete all registry settings and reload the program. "
                 "Are you sure you want to proceed?",
                 BoxIcon::kCritical)) {
      return;
    }
    basSettings::DeleteAllSettings();
    // The new window may show messages, during which this one is destroyed.
    if (Close()) wxTheApp->CallAfter(show_afresh_);
  });
}

void frmMain::mnuExit_Click() {
  Trap("frmMain.mnuExit_Click", [&] { Close(); });
}

void frmMain::mnuCheck_Click() {
  Trap("frmMain.mnuCheck_Click", [&] {
    if (!run_on_stack_) Start({.check = true, .keep_readings = true});
  });
}

void frmMain::mnuReport_Click() {
  Trap("frmMain.mnuReport_Click", [&] { last_report_.Open(); });
}

void frmMain::mnuHelpHelp_Click() {
  Trap("frmMain.mnuHelpHelp_Click",
       [&] { ShellOpen(JoinPath(JoinPath(Platform().program_folder, "Help"), "korvex.html")); });
}

void frmMain::StoreSelectedMode() {
  const OptionId mode = SharedControls().GetSelectedOption(*fraCurrentMode_, kByCaption);
  basSettings::SetEverySheetRepresents(std::get<std::string>(mode));
}

void frmMain::optFiles_Click() {
  Trap("frmMain.optFiles_Click", [&] {
    StoreSelectedMode();
    ListFilesOfMode();
  });
}

void frmMain::optFolders_Click() {
  Trap("frmMain.optFolders_Click", [&] {
    StoreSelectedMode();
    ListFilesOfMode();
  });
}

// Nothing that is typed as a pattern may fill the list then.
void frmMain::ListFilesOfMode() {
  const bool folders = optFolders_->GetValue();
  RestorePattern();  // a platform may tell of the click first
  txtPattern_->SetEditable(!folders);
  txtPattern_->SetBackgroundColour(
      wxSystemSettings::GetColour(folders ? wxSYS_COLOUR_BTNFACE : wxSYS_COLOUR_WINDOW));
  txtPattern_->Refresh();
  FileChooser_->SetPattern(folders ? kNoFilePattern : TypedPattern());
  CountAfresh();
}

void frmMain::CountAfresh() {
  if (optFolders_->GetValue()) {
    contents_.Start(FileChooser_->Path(), FileChooser_->Entries());
    const std::string former = std::exchange(counted_folder_, FileChooser_->Path());
    // What is known of the same folder stays until it has been counted anew.
    if (former != counted_folder_ || contents_.IsDone()) ShowCounted();
  } else {
    counted_folder_.clear();
    FileChooser_->SetNote("");
  }
}

bool frmMain::CountOn() {
  if (running_ || counted_folder_.empty() || contents_.IsDone()) return false;
  const wxBusyCursor busy;  // a single listing can take long
  const auto start = std::chrono::steady_clock::now();
  std::chrono::steady_clock::duration taken{};
  while (!contents_.IsDone() && taken < kCountingStep) {
    contents_.Step();
    taken = std::chrono::steady_clock::now() - start;
  }
  FileChooser_->AddToLook(taken);
  if (contents_.IsDone()) ShowCounted();
  return !contents_.IsDone();
}

void frmMain::ShowCounted() {
  FileChooser_->SetNote(contents_.Text());
}

std::string frmMain::TypedPattern() const {
  const std::string pattern = FromWx(txtPattern_->GetValue());
  return pattern.empty() ? "*" : pattern;
}

void frmMain::txtPattern_Change() {
  Trap(
      // Each letter that is typed counts. While the text is no pattern the list keeps the former
      // one.
      "frmMain.txtPattern_Change",
      [&] {
        FileChooser_->SetPattern(TypedPattern());
        valid_pattern_ = FromWx(txtPattern_->GetValue());
      },
      [&](const TrappedError&) {
        const RaisedFlag objecting(objecting_);  // the message takes the focus away
        Platform().dialogs->ShowPlain(
            {.text = "Please insert a valid filename pattern. (Example: *.xls)"});
      });
}

void frmMain::RestorePattern() {
  if (!objecting_ && !IsPattern(TypedPattern())) txtPattern_->ChangeValue(ToWx(valid_pattern_));
}

void frmMain::Timer1_Timer() {
  // Back at its own size, the window may object to the next change.
  if (GetClientSize() == design_size_) refused_size_ = {};
  const std::string folder = FileChooser_->Path();
  const wxString full_name = ToWx(folder);
  // Shortening the path asks the disk: a share that does not answer would block the window.
  if (full_name == lblFolder_->GetToolTipText()) return;
  lblFolder_->SetToolTip(full_name);
  std::string shown = Shown(folder);  // which will do when the folder has just vanished
  Attempt([&] { shown = ShortenPath(folder, false); });
  lblFolder_->SetLabelText(ToWx(shown + " "));
}

void frmMain::FileChooser_DblClick() {
  Trap("frmMain.FileChooser_DblClick", [&] {
    if (!Confirm("Open this File?") || FileChooser_->FileCount() == 0) return;
    const std::vector<std::string> selected = FileChooser_->SelFullPaths();
    if (!selected.empty()) ShellOpen(selected.front());
  });
}

void frmMain::ErrorMessage(const std::string& text) {
  Trap("frmMain.moKorvex_ErrorMessage", [&] { SetMessage(text); });
}

void frmMain::Message(const std::string& text) {
  Trap("frmMain.moKorvex_Message", [&] { SetMessage(text); });
}

void frmMain::ProcessedFile() {
  Trap("frmMain.moKorvex_ProcessedFile",
       [&] { prg_->SetValue(std::min(prg_->GetValue() + 1, prg_->GetRange())); });
}

void frmMain::EnterRunning() {
  running_ = true;
  starting_ = true;
  EnableForRun(false);
  SetProcessCaption("Stop");
  SetCursor(wxCURSOR_WAIT);
  // What had the focus is disabled now, and keys should reach the button that stops.
  cmdProcess_->SetFocus();
}

void frmMain::LeaveRunning() {
  running_ = false;
  starting_ = false;
  EnableForRun(true);
  SetProcessCaption("&Run!");
  SetCursor(wxNullCursor);
  if (focus_before_run_) focus_before_run_->SetFocus();
}

// GTK can lose the text of a button when the same text is set again.
void frmMain::SetProcessCaption(const wxString& caption) {
  if (cmdProcess_->GetLabel() != caption) cmdProcess_->SetLabel(caption);
}

// The shortcut keys of a menu's entries still work when only the menu is disabled.
void frmMain::EnableForRun(bool enable) {
  for (std::size_t menu = 0; menu < GetMenuBar()->GetMenuCount(); ++menu) {
    GetMenuBar()->EnableTop(menu, enable);
    for (wxMenuItem* item : GetMenuBar()->GetMenu(menu)->GetMenuItems()) {
      if (!item->IsSeparator()) item->Enable(enable);
    }
  }
  DoMenuUpdates();  // entries that are possible only now and then
  for (FramePanel* frame : {fraMain_, fraCurrentMode_}) {
    korvex::EnableFrame(*frame, enable);
    SharedControls().EnableFrame(*frame, enable);
  }
  FileChooser_->SetEnabled(enable);
}

void frmMain::SetMessage(const std::string& text) {
  lblMessages_->SetLabelText(ToWx(text));
}

// A run that was refused before it began leaves the report of the one before it. The run itself is
// done: nothing here may make it fail.
void frmMain::RunEnded(const RunRecord& record) {
  Trap("frmMain.RunEnded", [&] {
    const bool has_report = running_ && last_report_.Keep(record);
    const RunSummary summary = Summary(record);
    if (summary.text.empty()) return;
    std::vector<std::string> buttons{"OK"};
    if (has_report) buttons.insert(buttons.begin(), kShowReport);
    auto ok = static_cast<int>(buttons.size());  // counted from one
    const std::string answer =
        ShowMessageBox(summary.text, buttons, kProgramTitle, summary.icon, ok);
    if (answer == kShowReport) last_report_.Open();
  });
}

void frmMain::SetProgress(std::int32_t value, std::int32_t maximum) {
  prg_->SetRange(std::max<std::int32_t>(maximum, 1));
  // A gauge refuses values beyond its range.
  prg_->SetValue(std::min(value, prg_->GetRange()));
  // The first step of a run: what comes next can take long without letting anybody in.
  if (starting_) PaintNow();
}

// What was clicked and typed while the window stood still is served here, and comes to nothing.
void frmMain::PaintNow() {
  busy_.reset();
  Platform().message_loop->Yield();
  wxMilliSleep(kScreenRefresh);
  Platform().message_loop->Yield();
  starting_ = false;
}

}  // namespace korvex
