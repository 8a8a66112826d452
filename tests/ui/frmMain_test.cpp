// The main window over a campaign in memory.
#include "ui/frmMain.h"

#include "tests/support/campaign.h"
#include "tests/ui/ui_support.h"
#include "ui/window_services.h"

namespace korvex {
namespace {

constexpr char kLog[] = "/opt/korvex/bin/../AppErr/KORVEX.LOG";

class MainWindowTest : public testing::Test {
 protected:
  MainWindowTest() {
    Set("Last Path", campaign.folder);
    campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
    campaign.Put("a/P-1-2.xls", {{1, "K1", 7, 0.2}});
  }
  ~MainWindowTest() override { Close(); }

  void Open() { window_ = &main_window_.Show(); }
  void Close() {
    if (window_) window_->Close();
    WaitUntil([this] { return !window_; });
  }
  // Opens the window on the folder "a", with its files to choose from.
  void OpenOnFiles() {
    Set("Last Path", campaign.Path("a"));
    Open();
    Choose(*window_, "optFiles");
  }
  void Set(const char* key, const std::string& value) { campaign.Set("Main Section", key, value); }

  template <class Control>
  Control& The(const std::string& name) {
    return Find<Control>(*window_, name);
  }
  std::string Label(const std::string& name) { return FromWx(The<wxControl>(name).GetLabelText()); }
  std::vector<std::string> Files() { return Items(*window_, "filMain"); }
  void Run() { Click(*window_, "cmdProcess"); }
  void Menu(const std::string& entry) { ChooseMenu(*window_, "File", entry); }
  void ExpectUsable(bool usable) {
    const wxMenuBar& menus = *window_->GetMenuBar();
    EXPECT_EQ(Label("cmdProcess"), usable ? "Run!" : "Stop");
    for (const std::size_t menu : {0, 1}) EXPECT_EQ(menus.IsEnabledTop(menu), usable) << menu;
    EXPECT_EQ(menus.IsEnabled(menus.FindMenuItem("File", "Run")), usable) << "F5";
    for (const char* name : {"fraMain", "fraCurrentMode", "optFiles", "txtPattern", "filMain"})
      EXPECT_EQ(The<wxWindow>(name).IsThisEnabled(), usable) << name;
    EXPECT_EQ(Label("lblMessages") == "Ready", usable);
  }

  Campaign campaign;
  RecordingDialogs& dialogs = campaign.platform.dialogs;
  OpenMainWindow main_window_;
  wxWeakRef<frmMain> window_;
};

TEST_F(MainWindowTest, StartsWhereTheUserLeftIt) {
  Open();
  EXPECT_EQ(window_->GetTitle(), std::string("KORVEX ") + kProgramVersion);
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.folder);
  EXPECT_EQ(Label("lblFolder"), "/.../data/screen ");
  EXPECT_TRUE(The<wxRadioButton>("optFolders").GetValue());
  ExpectUsable(true);
  EXPECT_EQ(AppLog().Filename(), kLog);
  Choose(*window_, "optFiles");
  Close();
  Open();
  EXPECT_TRUE(The<wxRadioButton>("optFiles").GetValue());
  EXPECT_THAT(dialogs.texts, IsEmpty());
}

TEST_F(MainWindowTest, StartsAboveAFolderThatIsGoneOrRefusedAndSaysSo) {
  MemoryFileSystem& files = campaign.platform.files;
  files.AddFolder(campaign.Path("R&D/secret/plates"));
  files.Deny(campaign.Path("R&D/secret"));
  for (const char* left_at : {"R&D/b/c", "R&D/secret", "R&D/secret/gone"}) {
    Set("Last Path", campaign.Path(left_at));
    Open();
    EXPECT_EQ(main_window_.ProcessingFolder(), campaign.Path("R&D"));
    EXPECT_EQ(Label("lblFolder"), "/.../screen/R&D ");
    EXPECT_THAT(Label("lblMessages"), HasSubstr(campaign.Path(left_at)));
    Close();
  }
  EXPECT_THAT(dialogs.texts, IsEmpty());
}

TEST_F(MainWindowTest, StartsInTheHomeFolderWhenTheSettingsCannotBeRead) {
  campaign.platform.settings.failure = error_number::kPermissionDenied;
  Open();
  EXPECT_EQ(main_window_.ProcessingFolder(), "/home/user");
  EXPECT_THAT(dialogs.texts, ElementsAre("An error occurred while loading.\r\n\r\nThe Error has "
                                         "been written to a log file."));
  EXPECT_THAT(campaign.platform.files.Content("/opt/korvex/AppErr/KORVEX.LOG"),
              HasSubstr("frmMain.Form_Load"));
  ExpectUsable(true);
}

TEST_F(MainWindowTest, ListsFilesByThePatternUnlessSubFoldersAreProcessed) {
  campaign.platform.files.AddFile(campaign.Path("a/notes.txt"));
  OpenOnFiles();
  EXPECT_THAT(Files(), ElementsAre("P-1-1.xls", "P-1-2.xls"));
  auto& pattern = The<wxTextCtrl>("txtPattern");
  pattern.SetValue("*-2.xls;*.txt");
  EXPECT_THAT(Files(), ElementsAre("notes.txt", "P-1-2.xls"));
  Choose(*window_, "optFolders");
  EXPECT_THAT(Files(), IsEmpty());
  Choose(*window_, "optFiles");
  EXPECT_THAT(Files(), ElementsAre("notes.txt", "P-1-2.xls"));
  pattern.SetValue("");
  Choose(*window_, "optFiles");
  EXPECT_THAT(Files(), ElementsAre("notes.txt", "P-1-1.xls", "P-1-2.xls"));
  pattern.SetValue("a/b");
  EXPECT_THAT(dialogs.texts,
              ElementsAre("Please insert a valid filename pattern. (Example: *.xls)"));
}

TEST_F(MainWindowTest, ConvertsWhileTheWindowShowsIt) {
  Set("Launch Output File", "1");
  Open();
  std::vector<std::string> seen;
  campaign.platform.message_loop.on_yield = [&] {
    ExpectUsable(false);
    EXPECT_FALSE(window_->Close());
    wxMouseEvent second_press(wxEVT_LEFT_DCLICK);
    The<wxButton>("cmdProcess").HandleWindowEvent(second_press);
    Run();
    seen.push_back(Label("lblMessages") + " " + std::to_string(The<wxGauge>("prg").GetValue()));
  };
  Run();
  EXPECT_THAT(dialogs.texts, ElementsAre("Process finished!"));
  EXPECT_THAT(seen, Contains("Folder 1 of 1, Filename P-1-1 (1 of 2), Sheet 1 of 1 2"));
  EXPECT_EQ(The<wxGauge>("prg").GetRange(), 4);
  EXPECT_EQ(The<wxGauge>("prg").GetValue(), 4);
  EXPECT_EQ(campaign.Output().Value(2, 4).number, 0.2);
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre("/out/all.xls"));
  ExpectUsable(true);
}

TEST_F(MainWindowTest, ConvertsTheSelectedFilesOnceTheRunMayStart) {
  campaign.platform.files.AddFile("/out/all.xls", "kept");
  Set("Auto-Replace Output files", "0");
  dialogs.plain_answers = {BoxAnswer::kOk, BoxAnswer::kOk, BoxAnswer::kCancel};
  OpenOnFiles();
  Run();
  Menu("Options...");
  The<wxListBox>("filMain").SetSelection(1);
  Run();
  ExpectUsable(true);
  EXPECT_EQ(The<wxGauge>("prg").GetValue(), 0);
  EXPECT_EQ(campaign.platform.files.Content("/out/all.xls"), "kept");
  Menu("Run");
  const std::string none = "Please select at least one file to process.";
  const std::string exists =
      "The file \"/out/all.xls\" exists. Would you like to replace it with a new output file?";
  EXPECT_THAT(dialogs.texts, ElementsAre(none, none, exists, exists, "Process finished!"));
  EXPECT_EQ(The<wxGauge>("prg").GetRange(), 3);
  EXPECT_EQ(campaign.Output().Value(2, 3).number, 0.2);
}

TEST_F(MainWindowTest, StartsAfreshWhenTheSettingsAreDeleted) {
  OpenOnFiles();
  dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kOk};
  Menu("Delete Registry Settings");
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.Path("a"));
  Menu("Delete Registry Settings");
  WaitUntil([&] { return !window_; });
  window_ = main_window_.Window();
  EXPECT_EQ(dialogs.texts.front(),
            "This will delete all registry settings and reload the program. Are you sure you want "
            "to proceed?");
  EXPECT_EQ(main_window_.ProcessingFolder(), "/home/user");
  EXPECT_FALSE(campaign.platform.settings.Get("Main Section", "Output File").has_value());
  EXPECT_EQ(AppLog().Filename(), kLog);
}

TEST_F(MainWindowTest, OpensHelpAndTheFileThatIsDoubleClicked) {
  OpenOnFiles();
  ChooseMenu(*window_, "Help", "Help");
  The<wxListBox>("filMain").SetSelection(0);
  dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kOk};
  for (int click = 0; click < 2; ++click) Send(The<wxListBox>("filMain"), wxEVT_LISTBOX_DCLICK);
  EXPECT_THAT(dialogs.texts, ElementsAre("Open this File?", "Open this File?"));
  EXPECT_THAT(campaign.platform.shell.opened,
              ElementsAre("/opt/korvex/bin/Help/korvex.html", campaign.Path("a/P-1-1.xls")));
}

TEST_F(MainWindowTest, KeepsItsSize) {
  Open();
  const wxSize design = window_->GetSize();
  window_->SetSize(design + wxSize(80, 60));
  WaitUntil([&] { return window_->GetSize() == design; });
}

}  // namespace
}  // namespace korvex
