#include "ui/FileChooser.h"

#include <wx/choice.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/utils.h>

#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "tests/ui/ui_support.h"
#include "ui/folder_tree.h"

namespace korvex {
namespace {

// A chooser on a window of its own, at /data/run1 or C:\data\run1 with the files A.xls, b.XLS and
// c.csv and the folders sub and .hidden.
struct Chooser {
  explicit Chooser(PathStyle style = PathStyle::kLinux) : platform(style) {
    for (const char* file : {"c.csv", "b.XLS", "A.xls", ".lock.xls"}) files.AddFile(In(file));
    for (const char* name : {"sub", ".hidden"}) files.AddFolder(In(name));
    frame->SetSizer(new wxBoxSizer(wxVERTICAL));
    frame->GetSizer()->Add(&chooser, wxSizerFlags(1).Expand());
    frame->SetClientSize(800, 500);
    frame->Show();
    ServeEvents();
    chooser.SetPath(folder);
  }
  ~Chooser() { delete frame; }

  std::string In(const std::string& name) const { return folder + files.Separator() + name; }
  std::vector<std::string> Files() { return Items(chooser, "filMain"); }
  // The item with the names on the way to it, below the root.
  wxTreeItemId Item(const std::vector<std::string>& names) {
    wxTreeItemId item = dirMain.GetRootItem();
    for (const std::string& name : names) {
      item = dirMain.GetFirstChild(item);
      while (item.IsOk() && FromWx(dirMain.GetItemText(item)) != name)
        item = dirMain.GetNextSibling(item);
      if (!item.IsOk()) break;
    }
    return item;
  }
  // The user comes back to the window from another one.
  void ComeBack() {
    wxActivateEvent event(wxEVT_ACTIVATE, true, frame->GetId());
    frame->ProcessWindowEvent(event);
  }
  void ChooseDrive(const std::string& drive) {
    drvMain.SetStringSelection(ToWx(drive));
    Send(drvMain, wxEVT_CHOICE, drvMain.GetSelection());
  }

  TestPlatform platform;
  MemoryFileSystem& files = platform.files;
  RecordingDialogs& dialogs = platform.dialogs;
  const std::string folder = files.Separator() == '/' ? "/data/run1" : "C:\\data\\run1";
  wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "form");
  FileChooser& chooser = *new FileChooser(frame, "FileChooser");
  wxListBox& filMain = Find<wxListBox>(chooser, "filMain");
  FolderTree& dirMain = Find<FolderTree>(chooser, "dirMain");
  wxChoice& drvMain = Find<wxChoice>(chooser, "drvMain");
};

TEST(FileChooser, ListsTheFilesOfThePatternAndReturnsTheSelectedOnesByteForByte) {
  Chooser form;
  EXPECT_THAT(form.Files(), ElementsAre("A.xls", "b.XLS", "c.csv"));
  form.files.AddFile(form.In("z\xff.xls"));
  form.chooser.LookAgain();
  form.chooser.SetPattern("*.xls");
  EXPECT_EQ(ErrorOf([&] { form.chooser.SetPattern("a/b"); }).Number(), error_number::kInvalidCall);
  EXPECT_EQ(form.chooser.Pattern(), "*.xls");
  EXPECT_THAT(form.chooser.SelFullPaths(), IsEmpty());
  for (const int file : {2, 0}) form.filMain.SetSelection(file);
  EXPECT_THAT(form.chooser.SelFilenames(), ElementsAre("A.xls", "z\xff.xls"));
  EXPECT_THAT(form.chooser.SelFullPaths(), ElementsAre("/data/run1/A.xls", "/data/run1/z\xff.xls"));
  form.chooser.SetMultiSelect(false);
  form.filMain.SetSelection(1);
  Send(form.filMain, wxEVT_LISTBOX, 1);
  EXPECT_THAT(form.chooser.SelFilenames(), ElementsAre("b.XLS"));
}

TEST(FileChooser, ShowsTheFolderThatIsClickedOrSaysWhyItCannot) {
  Chooser form;
  form.files.AddFile(form.In("sub/A.xls"));
  form.filMain.SetSelection(0);
  form.dirMain.SelectItem(form.Item({"data", "run1", "sub"}));
  EXPECT_EQ(form.chooser.Path(), "/data/run1/sub");
  EXPECT_THAT(form.Files(), ElementsAre("A.xls"));
  EXPECT_EQ(form.chooser.SelectedCount(), 0) << "the same name, but another file";
  form.files.Deny(form.folder);
  form.dirMain.SelectItem(form.Item({"data", "run1"}));
  WaitUntil([&] { return !form.dialogs.plain.empty(); });
  EXPECT_THAT(form.Files(), IsEmpty());
  EXPECT_EQ(form.dialogs.plain[0].icon, BoxIcon::kCritical);
}

TEST(FileChooser, OpensAFolderBelowOneThatCannotBeListedButNotThatOne) {
  Chooser form;
  form.files.AddFile("/secret/open/x.xls");
  form.files.Deny("/secret");
  EXPECT_EQ(ErrorOf([&] { form.chooser.SetPath("/secret"); }).Number(),
            error_number::kPermissionDenied);
  EXPECT_EQ(ErrorOf([&] { form.chooser.SetPath("/gone"); }).Number(), error_number::kPathNotFound);
  EXPECT_EQ(form.chooser.Path(), form.folder);
  EXPECT_EQ(form.chooser.FileCount(), 3);
  form.chooser.SetPath("/secret/open/");
  EXPECT_EQ(form.chooser.Path(), "/secret/open");
  EXPECT_EQ(form.dirMain.GetSelection(), form.Item({"secret", "open"}));
}

TEST(FileChooser, LooksIntoAFolderWhenItIsOpened) {
  Chooser form;
  form.files.AddFolder("/data/run2/plates");
  form.chooser.LookAgain();
  EXPECT_FALSE(form.Item({"data", "run1", ".hidden"}).IsOk());
  const wxTreeItemId with = form.Item({"data", "run2"});
  const wxTreeItemId without = form.Item({"data", "run1", "sub"});
  EXPECT_TRUE(form.dirMain.ItemHasChildren(with) && form.dirMain.ItemHasChildren(without));
  EXPECT_FALSE(form.dirMain.GetFirstChild(with).IsOk());
  form.dirMain.Expand(with);
  form.dirMain.Expand(without);
  EXPECT_TRUE(form.Item({"data", "run2", "plates"}).IsOk());
  EXPECT_FALSE(form.dirMain.ItemHasChildren(without));
  form.chooser.SetPath("/data/run1/.hidden");
  EXPECT_EQ(form.dirMain.GetSelection(), form.Item({"data", "run1", ".hidden"}));
}

TEST(FileChooser, FollowsTheDiskWhenTheUserComesBackUnlessItIsDisabled) {
  Chooser form;
  form.files.AddFolder("/data/run2/plates");
  form.ComeBack();
  form.dirMain.Expand(form.Item({"data", "run2"}));
  form.filMain.SetSelection(1);
  form.files.AddFile(form.In("aa.xls"));
  form.files.AddFolder("/data/run0");
  form.files.Remove(form.In("sub"));
  form.chooser.SetEnabled(false);
  for (const char* name : {"fraMain", "drvMain", "dirMain", "filMain", "cmdNetWork"})
    EXPECT_FALSE(Find<wxWindow>(form.chooser, name).IsThisEnabled()) << name;
  form.ComeBack();
  EXPECT_EQ(form.chooser.FileCount(), 3);
  form.chooser.SetEnabled(true);  // as at the end of a run
  EXPECT_THAT(form.Files(), ElementsAre("A.xls", "aa.xls", "b.XLS", "c.csv"));
  EXPECT_THAT(form.chooser.SelFilenames(), ElementsAre("b.XLS"));
  EXPECT_TRUE(form.Item({"data", "run0"}).IsOk());
  EXPECT_FALSE(form.Item({"data", "run1", "sub"}).IsOk());
  EXPECT_TRUE(form.dirMain.IsExpanded(form.Item({"data", "run2"})));
  form.files.Remove(form.folder);
  form.ComeBack();
  EXPECT_EQ(form.chooser.Path(), "/data");
  EXPECT_THAT(form.dialogs.plain, IsEmpty());
}

TEST(FileChooser, LooksAtASlowShareSeldomUnlessTheUserAsks) {
  Chooser form;
  int looks = 0;
  form.files.on_list = [&](const std::string& listed) {
    if (listed != form.folder) return;
    ++looks;
    EXPECT_TRUE(wxIsBusy());
    wxMilliSleep(210);
  };
  for (int i = 0; i < 3; ++i) form.ComeBack();
  EXPECT_EQ(looks, 1);
  EXPECT_FALSE(wxIsBusy());
  // What the owner looks up counts as well.
  form.files.on_list = [&](const std::string& listed) { looks += listed == form.folder ? 1 : 0; };
  form.chooser.LookAgain();
  form.ComeBack();
  EXPECT_EQ(looks, 3);
  form.chooser.AddToLook(std::chrono::seconds(1));
  form.ComeBack();
  EXPECT_EQ(looks, 3);
  // The user clicks on the current folder, wherever it stands.
  wxWindow& tree = *form.dirMain.GetChildren().front();
  wxMouseEvent click(wxEVT_LEFT_DOWN);
  const wxSize size = tree.GetClientSize();
  for (int spot = 0; looks < 4 && spot < size.y * size.x / 64; ++spot) {
    click.SetPosition(8 * wxPoint(spot % (size.x / 8), spot / (size.x / 8)));
    tree.HandleWindowEvent(click);
    ServeEvents();
  }
  EXPECT_EQ(looks, 4);
}

TEST(FileChooser, CountsWhatIsSelectedAndShowsANoteInPlaceOfTheFiles) {
  Chooser form;
  const auto count = [&] {
    return FromWx(Find<wxStaticText>(form.chooser, "lblSelected").GetLabelText());
  };
  EXPECT_EQ(count(), "0 of 3 selected");
  EXPECT_THAT(form.chooser.SelectFiles({"b.XLS", "gone.xls", "A.xls"}), ElementsAre("gone.xls"));
  EXPECT_THAT(form.chooser.SelFilenames(), ElementsAre("A.xls", "b.XLS"));
  EXPECT_EQ(count(), "2 of 3 selected");
  form.filMain.DeselectAll();
  Send(form.filMain, wxEVT_LISTBOX, wxNOT_FOUND);
  EXPECT_EQ(count(), "0 of 3 selected");
  form.chooser.SetPattern("*.ods");
  EXPECT_EQ(count(), "No file matches the pattern");
  form.chooser.SetNote("all of them");
  EXPECT_FALSE(form.filMain.IsShown());
  EXPECT_EQ(FromWx(Find<wxTextCtrl>(form.chooser, "txtNote").GetValue()), "all of them");
  EXPECT_EQ(count(), "");
  form.chooser.SetNote("");
  EXPECT_TRUE(form.filMain.IsShownOnScreen());
}

TEST(FileChooser, ReturnsFromADriveThatIsEmpty) {
  Chooser form(PathStyle::kWindows);
  form.files.AddFolder("A:\\");
  form.files.AddFile("D:\\d.xls");
  form.files.Fail(FileOperation::kList, "A:\\", error_number::kDeviceUnavailable);
  form.chooser.LookAgain();
  form.ChooseDrive("A:\\");
  EXPECT_THAT(form.dialogs.texts, ElementsAre("Drive not available."));
  EXPECT_EQ(form.drvMain.GetStringSelection(), "C:\\");
  EXPECT_EQ(form.chooser.Path(), form.folder);
  form.ChooseDrive("D:\\");
  form.filMain.SetSelection(0);
  EXPECT_THAT(form.chooser.SelFullPaths(), ElementsAre("D:\\d.xls"));
}

TEST(FileChooser, AsksForAShareUntilItGetsOneOrIsCancelled) {
  Chooser form(PathStyle::kWindows);
  form.files.AddFolder("\\\\lab\\plates");
  form.dialogs.folder_answers = {"", "", "\\\\lab\\plates"};
  form.dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kRetry};
  for (const std::string& path : {form.folder, std::string("\\\\lab\\plates")}) {
    Click(form.chooser, "cmdNetWork");
    EXPECT_EQ(form.chooser.Path(), path);
  }
  EXPECT_EQ(form.drvMain.GetStringSelection(), "\\\\lab\\plates");
  EXPECT_THAT(form.dialogs.texts,
              ElementsAre("Did not select specific drive.", "Did not select specific drive."));
}

TEST(FileChooser, ShowsTheNameUnderThePointer) {
  Chooser form;
  const auto point_at = [&](int y) {
    wxMouseEvent event(wxEVT_MOTION);
    event.SetPosition({5, y});
    form.filMain.HandleWindowEvent(event);
    return FromWx(form.filMain.GetToolTipText());
  };
  WaitUntil([&] { return point_at(3) == "A.xls"; });
  EXPECT_EQ(point_at(form.filMain.GetClientSize().y - 3), "");
  point_at(3);
  form.dirMain.SelectItem(form.Item({"data", "run1", "sub"}));
  EXPECT_EQ(form.filMain.GetToolTipText(), "") << "of a file that is not shown any more";
}

TEST(FileChooser, KeepsTheSplitterBetweenItsBounds) {
  Chooser form;
  auto& splitter = Find<wxWindow>(form.chooser, "Splitter");
  const auto drag_to = [&](int x) {
    for (const wxEventType type : {wxEVT_LEFT_DOWN, wxEVT_MOTION, wxEVT_LEFT_UP}) {
      wxMouseEvent event(type);
      event.m_leftDown = type != wxEVT_LEFT_UP;
      event.m_x = type == wxEVT_LEFT_DOWN ? 2 : 2 + x - splitter.GetPosition().x;
      splitter.HandleWindowEvent(event);
    }
    return splitter.GetPosition().x;
  };
  const Twips twips(form.chooser);
  EXPECT_EQ(drag_to(300), 300);
  EXPECT_EQ(form.drvMain.GetRect().GetRight() + 1, 300);
  EXPECT_EQ(drag_to(-100), twips.ToPixels(1320));
  const int right = form.filMain.GetRect().GetRight() + 1;
  EXPECT_NEAR(drag_to(2000), right - twips.ToPixels(830), 1);
  EXPECT_GE(form.filMain.GetPosition().x, splitter.GetRect().GetRight());
}

}  // namespace
}  // namespace korvex
