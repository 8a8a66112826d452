#include "ui/FileChooser.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/dcclient.h>
#include <wx/listbox.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/toplevel.h>
#include <wx/utils.h>
#include <wx/wupdlock.h>

#include <algorithm>
#include <initializer_list>
#include <set>

#include "errors/trap.h"
#include "files/folder_listing.h"
#include "files/folder_paths.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/services.h"
#include "text/text.h"
#include "ui/folder_tree.h"
#include "ui/form_helpers.h"
#include "ui/frame_panel.h"

namespace korvex {
namespace {

constexpr int kDesignedSplitterLeft = 4200;  // twips
constexpr int kSplitterWidth = 6;
constexpr int kGap = 6;
const wxSize kLeastSize(420, 240);
constexpr int kLeastLeft = 1320;  // of the splitter, in twips
constexpr int kLeastFileList = 800;
constexpr int kSplitterAllowance = 30;

// A look that takes longer is felt as a stop. The lists then spend at most this part of the time on
// looking by themselves.
constexpr std::chrono::milliseconds kSlowLook{200};
constexpr int kPausesOfSlowLook = 100;

// Where the splitter may stand, in twips from the left edge: the drive box and the folder list on
// its left keep a usable width, and so does the file list on its right, up to its own right edge.
int ClampSplitter(int left, int file_list_right) {
  return std::min(std::max(left, kLeastLeft),
                  file_list_right - kLeastFileList - kSplitterAllowance);
}

wxArrayString Shown(const std::vector<std::string>& names) {
  wxArrayString shown;
  shown.reserve(names.size());
  for (const std::string& name : names) shown.push_back(ToWx(name));
  return shown;
}

// Whether an error is about the folder, not about this program.
bool IsFolderError(int number) {
  switch (number) {
    case error_number::kDeviceIo:
    case error_number::kDeviceUnavailable:
    case error_number::kPermissionDenied:
    case error_number::kPathFileAccess:
    case error_number::kPathNotFound:
      return true;
    default:
      return false;
  }
}

}  // namespace

// One look at the disk, under a busy pointer. How long it takes decides when the lists may look by
// themselves again.
class FileChooser::TimedLook {
 public:
  explicit TimedLook(FileChooser& chooser) : chooser_(chooser) {}
  ~TimedLook() {
    chooser_.look_took_ = {};
    chooser_.AddToLook(Clock::now() - start_);
  }
  TimedLook(const TimedLook&) = delete;
  TimedLook& operator=(const TimedLook&) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  FileChooser& chooser_;
  const Clock::time_point start_ = Clock::now();
  const wxBusyCursor busy_;
};

FileChooser::FileChooser(wxWindow* parent, const std::string& name)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, ToWx(name)),
      splitter_left_(kDesignedSplitterLeft) {
  fraMain_ = new FramePanel(this, "fraMain", "", false);
  drvMain_ = new wxChoice(fraMain_, wxID_ANY);
  drvMain_->SetName("drvMain");
  IgnoreWheel(*drvMain_);
  dirMain_ = new FolderTree(fraMain_, "dirMain");
  Splitter_ =
      new wxWindow(fraMain_, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, "Splitter");
  filMain_ = new wxListBox(fraMain_, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr,
                           wxLB_EXTENDED | wxLB_HSCROLL, wxDefaultValidator, "filMain");
  fraNote_ = new wxPanel(fraMain_, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                         wxTAB_TRAVERSAL | wxBORDER_THEME, "fraNote");
  txtNote_ = new wxTextCtrl(fraNote_, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                            wxTE_MULTILINE | wxTE_READONLY | wxTE_NO_VSCROLL | wxBORDER_NONE,
                            wxDefaultValidator, "txtNote");
  for (wxWindow* part : std::initializer_list<wxWindow*>{fraNote_, txtNote_})
    EnableFrame(*part, true);  // some platforms shade a text that cannot be changed
  fraNote_->Hide();
  cmdNetWork_ = new wxButton(fraMain_, wxID_ANY, "Network Neighbourhood");
  cmdNetWork_->SetName("cmdNetWork");
  lblSelected_ =
      new wxStaticText(fraMain_, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                       wxALIGN_RIGHT | wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_START, "lblSelected");
  LayOut();
  BindEvents();
  BindSplitter();
}

// The lists fill the space that there is. Their contents do not count for the layout, since
// measuring thousands of names would take long.
void FileChooser::LayOut() {
  for (wxWindow* list : std::initializer_list<wxWindow*>{dirMain_, filMain_, fraNote_})
    list->SetMinSize(FromDIP(wxSize(40, 40)));
  drvMain_->SetMinSize(wxSize(FromDIP(40), drvMain_->GetBestSize().y));
  Splitter_->SetMinSize(wxSize(FromDIP(kSplitterWidth), -1));
  Splitter_->SetCursor(wxCursor(wxCURSOR_SIZEWE));
  Splitter_->DisableFocusFromKeyboard();
  Splitter_->SetCanFocus(false);

  left_column_ = new wxBoxSizer(wxVERTICAL);
  left_column_->Add(drvMain_, wxSizerFlags().Expand());
  left_column_->Add(dirMain_, wxSizerFlags(1).Expand().Border(wxTOP, FromDIP(kGap)));
  auto* lists = new wxBoxSizer(wxHORIZONTAL);
  lists->Add(left_column_, wxSizerFlags().Expand());
  lists->Add(Splitter_, wxSizerFlags().Expand());
  lists->Add(filMain_, wxSizerFlags(1).Expand());
  fraNote_->SetSizer(new wxBoxSizer(wxVERTICAL));
  fraNote_->GetSizer()->Add(txtNote_, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(kGap)));
  lists->Add(fraNote_, wxSizerFlags(1).Expand());
  auto* below = new wxBoxSizer(wxHORIZONTAL);
  below->Add(cmdNetWork_);
  below->Add(lblSelected_, wxSizerFlags(1).CenterVertical().Border(wxLEFT, FromDIP(kGap)));
  fraMain_->Content().Add(lists, wxSizerFlags(1).Expand());
  fraMain_->Content().Add(below, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kGap)));

  auto* outer = new wxBoxSizer(wxVERTICAL);
  outer->Add(fraMain_, wxSizerFlags(1).Expand());
  SetSizer(outer);
  SetMinSize(FromDIP(kLeastSize));
}

void FileChooser::BindEvents() {
  fraMain_->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    FitLists();
    event.Skip();
  });
  drvMain_->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { drvMain_Change(); });
  dirMain_->Change = [this] { dirMain_Change(); };
  dirMain_->Clicked = [this] { Attempt([&] { LookAgain(); }); };
  dirMain_->Failed = [this] { ShowFailure(TrappedError("FileChooser.dirMain_Expand")); };
  filMain_->Bind(wxEVT_LISTBOX, [this](wxCommandEvent& event) { filMain_Click(event.GetInt()); });
  filMain_->Bind(wxEVT_LISTBOX_DCLICK, [this](wxCommandEvent&) {
    Trap("FileChooser.filMain_DblClick", [&] {
      if (DblClick) DblClick();
    });
  });
  filMain_->Bind(wxEVT_MOTION, [this](wxMouseEvent& event) {
    filMain_MouseMove(event.GetPosition());
    event.Skip();
  });
  filMain_->Bind(wxEVT_LEAVE_WINDOW, [this](wxMouseEvent& event) {
    ShowTip("");
    event.Skip();
  });
  cmdNetWork_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { cmdNetWork_Click(); });
  wxGetTopLevelParent(this)->Bind(wxEVT_ACTIVATE, &FileChooser::OnActivate, this);
}

void FileChooser::BindSplitter() {
  Splitter_->Bind(wxEVT_PAINT, [this](wxPaintEvent&) { PaintSplitter(); });
  Splitter_->Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent& event) {
    // Within the splitter, which follows the pointer: that distance is what stays the same.
    drag_start_ = event.GetX();
    Splitter_->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNSHADOW));
    Splitter_->Refresh();
    Splitter_->CaptureMouse();
  });
  Splitter_->Bind(wxEVT_MOTION, [this](wxMouseEvent& event) {
    if (!drag_start_ || !event.LeftIsDown() || event.GetX() == *drag_start_) return;
    const int left = Splitter_->GetPosition().x + event.GetX() - *drag_start_;
    splitter_left_ = Twips(*this).FromPixels(left);
    FitLists();
    fraMain_->Layout();
  });
  const auto end_drag = [this](wxEvent&) {
    if (!drag_start_) return;
    drag_start_.reset();
    if (Splitter_->HasCapture()) Splitter_->ReleaseMouse();
    Splitter_->SetBackgroundColour(wxNullColour);
    Splitter_->Refresh();
    const Twips twips(*this);
    // From where it stands: the layout may have stopped it short of the pointer.
    splitter_left_ = twips.FromPixels(Splitter_->GetPosition().x);
  };
  Splitter_->Bind(wxEVT_LEFT_UP, end_drag);
  // A window that comes up in front takes the mouse away; that ends a drag, too.
  Splitter_->Bind(wxEVT_MOUSE_CAPTURE_LOST, end_drag);
}

// A grip in its middle: nothing else tells that it can be dragged.
void FileChooser::PaintSplitter() {
  wxPaintDC dc(Splitter_);
  const wxColour colour = wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT);
  dc.SetBrush(colour);
  dc.SetPen(*wxTRANSPARENT_PEN);
  const wxSize size = Splitter_->GetClientSize();
  const int side = FromDIP(2);
  for (int dot = -2; dot <= 2; ++dot) {
    dc.DrawRectangle((size.x - side) / 2, size.y / 2 + dot * 3 * side, side, side);
  }
}

// The splitter stays where the user has put it as long as both lists have room.
void FileChooser::FitLists() {
  const Twips twips(*this);
  const int right = twips.FromPixels(fraMain_->GetClientSize().x);
  const int left = std::max(0, twips.ToPixels(ClampSplitter(splitter_left_, right)));
  left_column_->SetMinSize(wxSize(left, 1));
}

std::string FileChooser::Caption() const {
  return fraMain_->Caption();
}

void FileChooser::SetCaption(const std::string& caption) {
  fraMain_->SetCaption(caption);
}

void FileChooser::SetPattern(const std::string& pattern) {
  // Throws before anything has changed: a refused pattern leaves the former one.
  pattern_ = FilePattern(pattern);
  ShowMatchingFiles();
}

bool FileChooser::Enabled() const {
  return fraMain_->IsThisEnabled();
}

// The chooser is enabled again at the end of a run: show the files that the run has written.
void FileChooser::SetEnabled(bool enabled) {
  const bool again = enabled && !Enabled();
  EnableFrame(*fraMain_, enabled);
  EnableFrame(*dirMain_, enabled);
  EnableFrame(*filMain_, enabled);
  for (wxWindow* part : std::initializer_list<wxWindow*>{fraNote_, txtNote_})
    EnableFrame(*part, enabled);
  // GTK leaves the text itself on the colour that it was written on.
  txtNote_->SetStyle(0, txtNote_->GetLastPosition(),
                     wxTextAttr(wxNullColour, txtNote_->GetBackgroundColour()));
  ShowTip("");  // which would stay in front of whatever shows next
  dirMain_->SetForegroundColour(
      wxSystemSettings::GetColour(enabled ? wxSYS_COLOUR_WINDOWTEXT : wxSYS_COLOUR_GRAYTEXT));
  cmdNetWork_->Enable(enabled);
  drvMain_->Enable(enabled);
  if (!again) return;
  Attempt([&] { LookAgain(); });
  dirMain_->Reveal();
}

std::string FileChooser::Path() const {
  return dirMain_->Folder();
}

void FileChooser::SetPath(const std::string& new_path) {
  if (new_path.empty()) throw Error(error_number::kPathNotFound);
  const FileSystem& files = *Platform().files;
  const std::string folder = files.AbsolutePath(new_path);
  Open(DriveOf(folder, files.Drives()), folder);
}

void FileChooser::Open(const std::string& drive, const std::string& folder) {
  const TimedLook look(*this);
  // Listed first: a folder that cannot be listed must leave everything as it was.
  const std::vector<FolderEntry> entries = SortedEntries(folder);
  ShowDrives(drive);
  dirMain_->Open(drive, folder, entries);
  ForgetFiles();
  ShowFiles(entries);
}

void FileChooser::ShowDrives(const std::string& drive) {
  std::vector<std::string> drives = Platform().files->Drives();
  // A share is no drive of this machine. It stands behind the drives while it is shown.
  auto selected = std::find(drives.begin(), drives.end(), drive);
  if (selected == drives.end()) selected = drives.insert(drives.end(), drive);
  const auto index = static_cast<int>(selected - drives.begin());
  if (drives != drives_) {
    drvMain_->Set(Shown(drives));
    drives_ = std::move(drives);
  }
  if (drvMain_->GetSelection() != index) drvMain_->SetSelection(index);
}

void FileChooser::ShowFiles(const std::vector<FolderEntry>& entries) {
  entries_ = entries;
  ShowMatchingFiles();
  if (Looked) Looked();
}

// In another folder a file of the same name is another file, so nothing stays selected.
void FileChooser::ForgetFiles() {
  files_.clear();
  filMain_->Clear();
  ShowTip("");
  ShowCount();
}

// Files that are still there stay selected, and the list stays where it was scrolled to.
void FileChooser::ShowMatchingFiles() {
  std::vector<std::string> files;
  for (const FolderEntry& entry : entries_) {
    if (!entry.is_folder && !entry.is_hidden && pattern_.Matches(entry.name))
      files.push_back(entry.name);
  }
  // Most looks at the disk find nothing new, and then the list must not move.
  if (files == files_) return;
  const std::vector<std::string> names = SelFilenames();
  const std::set<std::string> selected(names.begin(), names.end());
  const int top = filMain_->GetTopItem();  // none before the list has been drawn
  const std::string first_name =
      top >= 0 && top < FileCount() ? files_[static_cast<std::size_t>(top)] : std::string();
  const wxWindowUpdateLocker no_flicker(filMain_);
  ShowTip("");
  files_ = std::move(files);
  filMain_->Set(Shown(files_));
  for (std::size_t i = 0; i < files_.size() && !selected.empty(); ++i) {
    if (selected.contains(files_[i])) filMain_->SetSelection(static_cast<int>(i));
  }
  const auto first = std::find(files_.begin(), files_.end(), first_name);
  if (first != files_.end()) filMain_->SetFirstItem(static_cast<int>(first - files_.begin()));
  ShowCount();
}

void FileChooser::ShowCount() {
  std::string count;
  if (!fraNote_->IsShown()) {
    count = files_.empty() ? "No file matches the pattern"
                           : GroupedDigits(static_cast<std::size_t>(SelectedCount())) + " of " +
                                 GroupedDigits(files_.size()) + " selected";
  }
  lblSelected_->SetLabelText(ToWx(count));
}

void FileChooser::SetNote(const std::string& note) {
  // Set again, a text would lose what the user has selected of it or scrolled to.
  if (txtNote_->GetValue() != ToWx(note)) txtNote_->ChangeValue(ToWx(note));
  const bool shows_note = !note.empty();
  if (fraNote_->IsShown() == shows_note) return;
  fraNote_->Show(shows_note);
  filMain_->Show(!shows_note);
  fraMain_->Layout();
  ShowCount();
}

std::vector<std::string> FileChooser::SelectFiles(const std::vector<std::string>& names) {
  std::vector<std::string> missing;
  filMain_->DeselectAll();
  for (const std::string& name : names) {
    const auto found = std::find_if(files_.begin(), files_.end(), [&](const std::string& file) {
      return IsSameName(file, name);
    });
    if (found == files_.end()) {
      missing.push_back(name);
    } else {
      filMain_->SetSelection(static_cast<int>(found - files_.begin()));
    }
  }
  ShowCount();
  return missing;
}

std::vector<std::string> FileChooser::SelFilenames() const {
  wxArrayInt selections;
  filMain_->GetSelections(selections);
  std::sort(selections.begin(), selections.end());
  std::vector<std::string> names;
  for (const int item : selections) names.push_back(files_[static_cast<std::size_t>(item)]);
  return names;
}

std::vector<std::string> FileChooser::SelFullPaths() const {
  std::vector<std::string> paths = SelFilenames();
  for (std::string& path : paths) path = JoinPath(Path(), path);
  return paths;
}

int FileChooser::FileCount() const {
  return static_cast<int>(files_.size());
}

int FileChooser::SelectedCount() const {
  wxArrayInt selections;
  return filMain_->GetSelections(selections);
}

void FileChooser::LookAgain() {
  if (Path().empty()) return;
  const TimedLook look(*this);
  const std::string folder = NearestExistingFolder(Path());
  if (folder != Path()) {
    SetPath(folder);
  } else {
    ShowDrives(dirMain_->Drive());
    std::vector<FolderEntry> entries;
    // A folder that cannot be listed now shows nothing; nobody asked for it, so nobody is told.
    Attempt([&] { entries = SortedEntries(folder); });
    dirMain_->ShowEntries(entries);
    ShowFiles(entries);
  }
  dirMain_->LookAgain();
}

void FileChooser::AddToLook(std::chrono::steady_clock::duration taken) {
  look_took_ += taken;
  next_look_ = std::chrono::steady_clock::now();
  if (look_took_ >= kSlowLook) next_look_ += look_took_ * kPausesOfSlowLook;
}

void FileChooser::drvMain_Change() {
  Trap(
      "FileChooser.drvMain_Change",
      [&] {
        const std::string& drive = drives_[static_cast<std::size_t>(drvMain_->GetSelection())];
        // Copies, since Open may refill the list that `drive` is an element of.
        if (drive != dirMain_->Drive()) Open(std::string(drive), std::string(drive));
      },
      [&](const TrappedError& error) {
        // An empty drive has a message of its own. The box goes back to the drive that is shown.
        const bool is_unavailable = error.Number() == error_number::kDeviceUnavailable ||
                                    error.Number() == error_number::kPathNotFound;
        if (is_unavailable) {
          Platform().dialogs->ShowPlain(
              {"Drive not available.", BoxButtons::kOk, BoxIcon::kCritical});
        } else {
          ShowFailure(error);
        }
        ShowDrives(dirMain_->Drive());
      });
}

void FileChooser::dirMain_Change() {
  // The tree shows the new folder already: no file of the former one may stay, whatever happens.
  ForgetFiles();
  Trap(
      "FileChooser.dirMain_Change",
      [&] {
        const TimedLook look(*this);
        const std::vector<FolderEntry> entries = SortedEntries(Path());
        dirMain_->ShowEntries(entries);
        ShowFiles(entries);
      },
      [&](const TrappedError& error) {
        ShowFiles({});
        ShowFailure(error);
      });
}

void FileChooser::filMain_Click(int item) {
  // A list cannot lose its multiple selection later, so the other items are deselected by hand.
  if (!multi_select_ && item != wxNOT_FOUND && filMain_->IsSelected(item))
    filMain_->DeselectAll(item);
  ShowCount();
}

void FileChooser::filMain_MouseMove(const wxPoint& position) {
  const int item = filMain_->HitTest(position);
  const wxString tip = item < 0 || item >= FileCount()
                           ? wxString()
                           : filMain_->GetString(static_cast<unsigned>(item));
  ShowTip(tip);
}

void FileChooser::ShowTip(const wxString& tip) {
  // The pointer moves often and the tip seldom changes.
  if (tip == filMain_->GetToolTipText()) return;
  if (tip.empty()) {
    filMain_->UnsetToolTip();
  } else {
    filMain_->SetToolTip(tip);
  }
}

void FileChooser::cmdNetWork_Click() {
  Trap(
      "FileChooser.cmdNetWork_Click",
      [&] {
        Dialogs& dialogs = *Platform().dialogs;
        for (;;) {
          const std::string share = dialogs.BrowseNetwork(wxGetTopLevelParent(this)->GetHandle(),
                                                          "Select a network computer or share.");
          // Nothing comes back from a cancelled dialog, nor from a computer in place of a share.
          if (!share.empty()) {
            SetPath(share);
            return;
          }
          const PlainMessage question{"Did not select specific drive.", BoxButtons::kRetryCancel};
          if (dialogs.ShowPlain(question) != BoxAnswer::kRetry) return;
        }
      },
      [&](const TrappedError& error) { ShowFailure(error); });
}

void FileChooser::OnActivate(wxActivateEvent& event) {
  event.Skip();
  // During a run the chooser is disabled and keeps showing what the run was started with.
  if (event.GetActive() && Enabled() && std::chrono::steady_clock::now() >= next_look_) {
    Attempt([&] { LookAgain(); });
  }
}

void FileChooser::FocusOnFolders() {
  dirMain_->SetFocus();
}

// Shown after the event, since the lists are still handling the click.
void FileChooser::ShowFailure(const TrappedError& error) {
  if (!IsFolderError(error.Number())) return error.Report();
  CallAfter([text = PendingError().Description()] {
    Platform().dialogs->ShowPlain({text, BoxButtons::kOk, BoxIcon::kCritical});
  });
}

}  // namespace korvex
