// The main window's controls and where they stand.

#include <wx/display.h>
#include <wx/dnd.h>
#include <wx/panel.h>
#include <wx/sizer.h>

#include "settings/basSettings.h"
#include "ui/accessible_names.h"
#include "ui/form_helpers.h"
#include "ui/frmMain.h"

namespace korvex {
namespace {

constexpr int kGap = 10;             // device independent pixels between neighbours
constexpr int kChooserWidth = 9000;  // twips
constexpr int kChooserHeight = 4500;
constexpr int kPatternWidth = 26;  // characters

template <class Handler>
int Append(wxMenu& menu, const char* caption, Handler handler) {
  const int id = menu.Append(wxID_ANY, caption)->GetId();
  menu.Bind(
      wxEVT_MENU, [handler](wxCommandEvent&) { handler(); }, id);
  return id;
}

// Takes files and folders that are dropped on a window.
class PathsTarget : public wxFileDropTarget {
 public:
  using Taker = std::function<void(const std::vector<std::string>& paths)>;
  explicit PathsTarget(Taker take) : take_(std::move(take)) {}

  bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& names) override {
    std::vector<std::string> paths;
    for (const wxString& name : names) paths.push_back(FromWx(name));
    take_(paths);
    return true;
  }

 private:
  Taker take_;
};

}  // namespace

void frmMain::CreateMenus() {
  auto* mnuFile = new wxMenu;
  Append(*mnuFile, "&Run\tF5", [this] { mnuRun_Click(); });
  mnuFile->AppendSeparator();
  Append(*mnuFile, "&Options...", [this] { mnuOptions_Click(); });
  Append(*mnuFile, "&Delete &Registry Settings", [this] { mnuRegistry_Click(); });
  mnuFile->AppendSeparator();
  Append(*mnuFile, "E&xit", [this] { mnuExit_Click(); });
  auto* mnuHelp = new wxMenu;
  Append(*mnuHelp, "&Help\tF1", [this] { mnuHelpHelp_Click(); });
  auto* bar = new wxMenuBar;
  bar->Append(mnuFile, "&File");
  bar->Append(ToolsMenu(), "&Tools");
  bar->Append(mnuHelp, "&Help");
  SetMenuBar(bar);
}

// Check and Report are grey while they are impossible, which is asked whenever the menu opens.
wxMenu* frmMain::ToolsMenu() {
  auto* mnuTools = new wxMenu;
  const int check = Append(*mnuTools, "&Check", [this] { mnuCheck_Click(); });
  const int report = Append(*mnuTools, "&Report of Last Run", [this] { mnuReport_Click(); });
  mnuTools->AppendSeparator();
  Append(*mnuTools, "Open Output &Folder", [this] { mnuOutputFolder_Click(); });
  Append(*mnuTools, "&Go to Folder...\tCtrl+L", [this] { mnuGoTo_Click(); });
  mnuTools->AppendSeparator();
  Append(*mnuTools, "Sample &Campaign", [this] { mnuSample_Click(); });
  const auto enable_while = [this](int id, auto possible) {
    Bind(
        wxEVT_UPDATE_UI,
        [this, possible](wxUpdateUIEvent& event) { event.Enable(!running_ && possible()); }, id);
  };
  enable_while(check, [this] { return HasSelection(); });
  enable_while(report, [this] { return last_report_.Exists(); });
  return mnuTools;
}

void frmMain::CreateControls() {
  SetIcons(AppIcons());
  auto* form = new wxPanel(this);
  // The tab order is the order of creation.
  fraCurrentMode_ = new FramePanel(form, "fraCurrentMode");
  fraCurrentMode_->Content().Add(ModeRows(), wxSizerFlags().Expand());
  fraMain_ = new FramePanel(form, "fraMain");
  FileChooser_ = new FileChooser(fraMain_, "FileChooser");
  const Twips twips(*this);
  FileChooser_->SetMinSize(wxSize(twips.ToPixels(kChooserWidth), twips.ToPixels(kChooserHeight)));
  FileChooser_->DblClick = [this] { FileChooser_DblClick(); };
  fraMain_->Content().Add(FileChooser_, wxSizerFlags(1).Expand());
  fraMain_->Content().Add(PatternRow(), wxSizerFlags().Border(wxTOP, FromDIP(kGap)));

  auto* rows = new wxBoxSizer(wxVERTICAL);
  const wxSizerFlags row = wxSizerFlags().Expand().Border(wxLEFT | wxTOP | wxRIGHT, FromDIP(kGap));
  rows->Add(fraCurrentMode_, row);
  rows->Add(fraMain_, wxSizerFlags(row).Proportion(1));
  rows->Add(ProgressRow(form), row);
  lblMessages_ = new wxStaticText(form, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                  wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE, "lblMessages");
  rows->Add(lblMessages_, wxSizerFlags(row).Border(wxALL, FromDIP(kGap)));
  form->SetSizer(rows);
  NameControls(*form);
  auto* frame = new wxBoxSizer(wxVERTICAL);
  frame->Add(form, wxSizerFlags(1).Expand());
  SetSizer(frame);
  TakeDroppedPaths(*form);
  TakeDroppedPaths(*txtPattern_);  // which would take the name of a file as text
}

// Opened once the drop is over: a message would keep the program that files come from waiting.
void frmMain::TakeDroppedPaths(wxWindow& window) {
  window.SetDropTarget(new PathsTarget([this](const std::vector<std::string>& paths) {
    CallAfter([this, paths] { OpenPaths(paths); });
  }));
}

// The folder stands beside its option. Its label is created before the options: the search for the
// selected option runs from the last control and stops at one that is no option.
wxSizer* frmMain::ModeRows() {
  lblFolder_ = new wxStaticText(fraCurrentMode_, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE, "lblFolder");
  const auto option = [this](const char* caption, const char* name, long style) {
    auto* button = new wxRadioButton(fraCurrentMode_, wxID_ANY, ToWx(caption), wxDefaultPosition,
                                     wxDefaultSize, style);
    button->SetName(ToWx(name));
    // Some platforms draw the text of a disabled option wider than they measure it.
    button->SetMinSize(button->GetBestSize() + wxSize(button->GetCharWidth(), 0));
    return button;
  };
  optFolders_ = option(basSettings::kProcessSubFolders, "optFolders", wxRB_GROUP);
  optFiles_ = option(basSettings::kProcessSelectedFiles, "optFiles", 0);
  optFolders_->Bind(wxEVT_RADIOBUTTON, [this](wxCommandEvent&) { optFolders_Click(); });
  optFiles_->Bind(wxEVT_RADIOBUTTON, [this](wxCommandEvent&) { optFiles_Click(); });

  auto* rows = new wxFlexGridSizer(2, wxSize(FromDIP(kGap), FromDIP(kGap / 2)));
  rows->AddGrowableCol(1);
  rows->Add(optFolders_, wxSizerFlags().CenterVertical());
  rows->Add(lblFolder_, wxSizerFlags().Expand().CenterVertical());
  rows->Add(optFiles_, wxSizerFlags().CenterVertical());
  return rows;
}

wxSizer* frmMain::PatternRow() {
  auto* row = new wxBoxSizer(wxHORIZONTAL);
  auto* lblFilePattern = new wxStaticText(fraMain_, wxID_ANY, "Filename Pattern:");
  lblFilePattern->SetName("lblFilePattern");
  txtPattern_ = NewTextBox(*fraMain_, "txtPattern", kPatternWidth);
  txtPattern_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { txtPattern_Change(); });
  txtPattern_->Bind(wxEVT_KILL_FOCUS, [this](wxFocusEvent& event) {
    event.Skip();
    RestorePattern();
  });
  row->Add(lblFilePattern, wxSizerFlags().CenterVertical());
  row->AddSpacer(FromDIP(kGap));
  row->Add(txtPattern_, wxSizerFlags().CenterVertical());
  return row;
}

wxSizer* frmMain::ProgressRow(wxWindow* form) {
  auto* row = new wxBoxSizer(wxHORIZONTAL);
  prg_ = new wxGauge(form, wxID_ANY, 1, wxDefaultPosition, wxDefaultSize,
                     wxGA_HORIZONTAL | wxGA_SMOOTH);
  prg_->SetName("prg");
  cmdProcess_ = new wxButton(form, wxID_ANY, "&Run!");
  cmdProcess_->SetName("cmdProcess");
  cmdProcess_->SetCursor(wxCURSOR_ARROW);
  cmdProcess_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { cmdProcess_Click(); });
  IgnoreSecondClick(*cmdProcess_);  // which would stop the run that the first one started
  row->Add(prg_, wxSizerFlags(1).CenterVertical());
  row->AddSpacer(FromDIP(kGap));
  row->Add(cmdProcess_, wxSizerFlags().CenterVertical());
  return row;
}

// As large as its controls need, but never larger than the screen. By the size inside the frame:
// GTK would take what it then adds as a frame away from the controls.
void frmMain::FitToControls() {
  wxSize size = GetSizer()->ComputeFittingClientSize(this);
  // How large the frame will be is known on some platforms only.
  const wxSize frame = GetSize() - GetClientSize() + FromDIP(wxSize(8, 32));
  size.DecTo(wxDisplay(this).GetClientArea().GetSize() - frame);
  SetClientSize(size);
  Bind(wxEVT_SHOW, [this](wxShowEvent& event) {
    event.Skip();
    if (event.IsShown()) CentreOnScreen();
  });
}

}  // namespace korvex
