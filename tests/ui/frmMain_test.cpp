// The main window over a campaign in memory.
#include "ui/frmMain.h"

#include <wx/sizer.h>
#include <wx/textdlg.h>

#include "settings/basSettings.h"
#include "tests/support/campaign.h"
#include "tests/ui/ui_support.h"
#include "ui/window_services.h"

namespace korvex {
namespace {

constexpr char kLog[] = "/opt/korvex/bin/../AppErr/KORVEX.LOG";
constexpr char kReport[] = "/home/user/.cache/korvex/last-run.html";

// Does something whenever a message is shown.
struct WatchedDialogs : RecordingDialogs {
  std::string ShowButtons(const ButtonMessage& message) override {
    on_message();
    return RecordingDialogs::ShowButtons(message);
  }
  std::function<void()> on_message;
};

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
  bool CanChoose(const std::string& tool) {
    window_->DoMenuUpdates();
    const wxMenuBar& menus = *window_->GetMenuBar();
    return menus.IsEnabled(menus.FindMenuItem("Tools", ToWx(tool)));
  }
  void Check() { ChooseMenu(*window_, "Tools", "Check"); }
  // A measured value that is no number, in one file.
  void PutFlaw() { campaign.Put("a/P-1-2.xls", {{1, "K1", 7, "OVRFLW"}}); }
  void ExpectUsable(bool usable) {
    const wxMenuBar& menus = *window_->GetMenuBar();
    EXPECT_EQ(Label("cmdProcess"), usable ? "Run!" : "Stop");
    for (const std::size_t menu : {0, 1, 2}) EXPECT_EQ(menus.IsEnabledTop(menu), usable) << menu;
    EXPECT_EQ(menus.IsEnabled(menus.FindMenuItem("File", "Run")), usable) << "F5";
    if (!usable) {
      EXPECT_FALSE(CanChoose("Check") || CanChoose("Report of Last Run"));
    }
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
  Choose(*window_, "optFolders");
  Choose(*window_, "optFiles");
  EXPECT_EQ(pattern.GetValue(), "") << "the last one that was valid";
  EXPECT_EQ(dialogs.texts.size(), 1u);
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

TEST_F(MainWindowTest, ShowsThatItRunsBeforeItLooksIntoTheSubFolders) {
  Open();
  ServeEvents();
  // Clicks of somebody who has seen nothing yet.
  int clicks = 0;
  campaign.platform.message_loop.on_yield = [&] {
    if (++clicks <= 2) Run();
  };
  bool looked = false;
  campaign.platform.files.on_list = [&](const std::string& folder) {
    if (folder != campaign.Path("a") || std::exchange(looked, true)) return;
    ExpectUsable(false);
    EXPECT_EQ(Label("lblMessages"), "Initializing...");
    EXPECT_EQ(The<wxGauge>("prg").GetValue(), 1);
    EXPECT_GE(clicks, 2);
  };
  Run();
  EXPECT_TRUE(looked);
  EXPECT_THAT(dialogs.texts, ElementsAre("Process finished!"));
}

TEST_F(MainWindowTest, DoesNotRepeatAFailedRunByTheKeyThatClosesItsMessage) {
  campaign.platform.files.AddFile(campaign.Path("a/notes-1.xls"), "no workbook");
  Open();
  ServeEvents();
  The<wxButton>("cmdProcess").SetFocus();
  WaitUntil([&] { return The<wxButton>("cmdProcess").HasFocus(); });
  Run();
  EXPECT_THAT(dialogs.texts, Contains(HasSubstr("notes-1.xls")));
  const wxWindow& tree = *The<wxWindow>("dirMain").GetChildren().front();
  WaitUntil([&] { return tree.HasFocus(); });
}

TEST_F(MainWindowTest, SaysWhatWillBeReadOfTheSubFolders) {
  campaign.platform.files.AddFolder(campaign.Path("a/old"));
  Open();
  auto& pattern = The<wxTextCtrl>("txtPattern");
  const std::string note =
      "1 sub-folder, 2 files: all will be read\n\nFolders inside them will be skipped: a/old";
  const auto shown = [&] { return FromWx(The<wxTextCtrl>("txtNote").GetValue()); };
  WaitUntil([&] { return shown() == note; });
  EXPECT_FALSE(pattern.IsEditable());
  const wxColour shade = pattern.GetBackgroundColour();
  Run();
  EXPECT_FALSE(pattern.IsEditable());
  EXPECT_EQ(pattern.GetBackgroundColour(), shade);
  campaign.platform.files.Remove(campaign.Path("a/old"));
  campaign.Put("b/P-1-1.xls", {{1, "K1", 7, 0.1}});
  Find<FileChooser>(*window_, "FileChooser").LookAgain();
  WaitUntil([&] { return shown() == "2 sub-folders, 3 files: all will be read"; });
  Choose(*window_, "optFiles");
  EXPECT_TRUE(pattern.IsEditable());
  EXPECT_NE(pattern.GetBackgroundColour(), shade);
  EXPECT_TRUE(The<wxListBox>("filMain").IsShownOnScreen());
}

TEST_F(MainWindowTest, OpensAFolderOrFilesOfOneFolder) {
  campaign.platform.files.AddFile(campaign.Path("a/P-1-3.ods"));
  campaign.platform.files.AddFile(campaign.Path("b/.P-1-1.xls"));
  Open();
  const auto open = [&](const std::vector<std::string>& names) {
    std::vector<std::string> paths;
    for (const std::string& name : names) paths.push_back(campaign.Path(name));
    window_->OpenPaths(paths);
  };
  const auto selected = [&] { return Find<FileChooser>(*window_, "FileChooser").SelFilenames(); };
  open({"a/P-1-2.xls", "a/P-1-3.ods"});
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.Path("a"));
  EXPECT_THAT(selected(), ElementsAre("P-1-2.xls", "P-1-3.ods"));
  EXPECT_EQ(The<wxTextCtrl>("txtPattern").GetValue(), "*.xls;*.ods");
  EXPECT_TRUE(basSettings::ProcessingFiles());
  const std::vector<std::string> refused[] = {
      {"a", "b"}, {"a/P-1-1.xls", "b/.P-1-1.xls"}, {"a/P-1-1.xls", "a"}};
  for (const auto& names : refused) {
    open(names);
    EXPECT_EQ(dialogs.texts.back(), "KORVEX opens one folder, or files that lie in one folder.");
    dialogs.texts.clear();
  }
  EXPECT_THAT(selected(), ElementsAre("P-1-2.xls", "P-1-3.ods")) << "nothing was opened";
  open({"b/.P-1-1.xls"});
  EXPECT_EQ(dialogs.texts.back(), "Not all of these files could be selected.");
  open({"b"});
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.Path("b"));
  EXPECT_TRUE(The<wxRadioButton>("optFolders").GetValue() && basSettings::ProcessingSubFolders());
  open({"gone"});
  WaitUntil([&] { return dialogs.texts.back().find("gone") != std::string::npos; });
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.Path("b"));
  campaign.platform.message_loop.on_yield = [&] { open({"a/P-1-1.xls"}); };
  open({"."});
  Run();
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.folder) << "a run goes on with what it has";
}

TEST_F(MainWindowTest, GoesToTheFolderThatIsTyped) {
  Open();
  const std::pair<std::string, std::string> cases[] = {
      {campaign.Path("a"), campaign.Path("a")},
      {"..", campaign.folder},
      {" \"" + campaign.Path("a/P-1-1.xls") + "\" ", campaign.Path("a")},
      {"~", "/home/user"},
      {" ", "/home/user"},
      {"/gone", "/home/user"}};
  for (const auto& [typed, folder] : cases) {
    ModalDriver driver;
    driver.Expect([text = typed](wxDialog& dialog) {
      dynamic_cast<wxTextEntryDialog&>(dialog).SetValue(ToWx(text));
      dialog.EndModal(wxID_OK);
    });
    ChooseMenu(*window_, "Tools", "Go to Folder...");
    EXPECT_EQ(main_window_.ProcessingFolder(), folder) << typed;
  }
  WaitUntil([&] { return !dialogs.texts.empty(); });
  EXPECT_THAT(dialogs.texts, ElementsAre(HasSubstr("/gone")));
}

TEST_F(MainWindowTest, OpensTheFolderOfTheOutput) {
  Open();
  ChooseMenu(*window_, "Tools", "Open Output Folder");
  Set("Output File Method", "Output File by Folder");
  ChooseMenu(*window_, "Tools", "Open Output Folder");
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre("/out", campaign.folder));
  Set("Output File Method", "Output File by constant name");
  Set("Output Path", "/gone/");
  ChooseMenu(*window_, "Tools", "Open Output Folder");
  Set("Output File", "");
  ChooseMenu(*window_, "Tools", "Open Output Folder");
  EXPECT_THAT(dialogs.texts, ElementsAre("The folder of the output file is not there.",
                                         HasSubstr("File > Options..., General Options")));
  EXPECT_EQ(campaign.platform.shell.opened.size(), 2u);
}

TEST_F(MainWindowTest, OpensACopyOfTheSampleCampaignReadyToRun) {
  MemoryFileSystem& files = campaign.platform.files;
  files.AddFile("/opt/korvex/samples/campaign/Set/P-1-1.xls", "reading");
  files.AddFile("/opt/korvex/samples/korvex.ini",
                "[Main Section]\nOutput File=campaign.xls\n"
                "Output File Method=Output File by Folder\n[File Structure]\n"
                "Output Columns=plate\nKeys Columns=well<-- -->plate\nData Column=OD\n");
  OpenOnFiles();
  dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kOk};
  const auto stored = campaign.platform.settings.values;
  ChooseMenu(*window_, "Tools", "Sample Campaign");
  EXPECT_EQ(campaign.platform.settings.values, stored);
  const std::string copy = "/home/user/Documents/KORVEX sample campaign";
  EXPECT_FALSE(files.FolderExists(copy));
  for (int time = 0; time < 2; ++time) ChooseMenu(*window_, "Tools", "Sample Campaign");
  EXPECT_EQ(dialogs.texts.size(), 2u) << "asked as long as there is something to lose";
  EXPECT_EQ(main_window_.ProcessingFolder(), copy);
  EXPECT_TRUE(basSettings::ProcessingSubFolders());
  EXPECT_THAT(basSettings::KeysColumns(), ElementsAre("well", "plate"));
  EXPECT_EQ(basSettings::DataColumn(), "OD");
  EXPECT_EQ(basSettings::OutputFile(), "campaign.xls");
  EXPECT_EQ(basSettings::OutputFileMethod(), basSettings::kByFolder);
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

TEST_F(MainWindowTest, SumsUpWhatARunNoticedAndKeepsItsReport) {
  PutFlaw();
  Set("Launch Output File", "1");
  Open();
  EXPECT_FALSE(CanChoose("Report of Last Run"));
  WatchedDialogs watched;
  watched.on_message = [this] {
    EXPECT_EQ(Label("cmdProcess"), "Stop") << "the run has not ended yet";
    EXPECT_THAT(campaign.platform.shell.opened, IsEmpty());
  };
  Services services = Platform();
  services.dialogs = &watched;
  const InstalledServices installed(services);
  Run();
  ASSERT_THAT(watched.texts,
              ElementsAre("Process finished!", HasSubstr("One measured value is no number")));
  const ButtonMessage& summary = watched.buttons.back();
  EXPECT_THAT(summary.buttons, ElementsAre("Show Report", "OK"));
  EXPECT_EQ(summary.default_button, 1);
  EXPECT_EQ(summary.icon, 17);
  EXPECT_EQ(summary.title, "KORVEX");
  // RecordingDialogs press the first button.
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre(kReport, "/out/all.xls"));
  EXPECT_THAT(campaign.platform.files.Content(kReport), HasSubstr("is no number"));
  ExpectUsable(true);
  watched.on_message = [] {};

  // The next run replaces it, though it fails; one that never began does not.
  campaign.platform.files.AddFile(campaign.Path("a/notes-1.xls"), "no workbook");
  Run();
  const std::string report = campaign.platform.files.Content(kReport);
  EXPECT_THAT(report, HasSubstr("notes-1.xls"));
  Choose(*window_, "optFiles");
  Run();
  EXPECT_EQ(watched.texts.back(), "Please select at least one file to process.");
  EXPECT_EQ(campaign.platform.files.Content(kReport), report);

  // It outlives the session, but not whoever deletes it.
  Close();
  Open();
  campaign.platform.shell.opened.clear();
  ChooseMenu(*window_, "Tools", "Report of Last Run");
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre(kReport));
  campaign.platform.files.Remove(kReport);
  ChooseMenu(*window_, "Tools", "Report of Last Run");
  EXPECT_THAT(watched.texts.back(), HasSubstr("is not there any more"));
  EXPECT_FALSE(CanChoose("Report of Last Run"));
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre(kReport));
}

TEST_F(MainWindowTest, FinishesARunWhoseReportCannotBeWritten) {
  campaign.platform.files.AddFile(kReport, "of an earlier run");
  campaign.platform.files.Fail(FileOperation::kReplace, kReport, error_number::kDiskFull);
  Open();
  EXPECT_TRUE(CanChoose("Report of Last Run"));
  Run();
  const std::string complaint = "The report of this run could not be written.";
  EXPECT_THAT(dialogs.texts, ElementsAre("Process finished!", complaint));
  EXPECT_THAT(dialogs.plain.back().cause, HasSubstr("last-run.html"));
  EXPECT_TRUE(campaign.HasOutput());
  EXPECT_FALSE(CanChoose("Report of Last Run"));
  EXPECT_FALSE(campaign.platform.files.FileExists(kReport)) << "it is not the last run's";
  PutFlaw();
  Run();
  EXPECT_THAT(dialogs.buttons.back().buttons, ElementsAre("OK"));
  EXPECT_EQ(dialogs.plain.size(), 1u) << "told once";
  ExpectUsable(true);
}

TEST_F(MainWindowTest, ChecksWithoutWritingAnything) {
  PutFlaw();
  campaign.Put("b/P-1-1.xls", {{1, "K2", 7, 0.1}, {2, "K2", 7, 0.2}});
  campaign.platform.files.AddFile(campaign.Path("b/notes-1.xls"), "no workbook");
  campaign.platform.files.AddFile("/out/all.xls", "kept");
  Set("Auto-Replace Output files", "0");
  Open();
  Choose(*window_, "optFiles");
  EXPECT_FALSE(CanChoose("Check")) << "nothing is selected";
  Find<FileChooser>(*window_, "FileChooser").SetPath(campaign.Path("a"));
  Choose(*window_, "optFiles");
  The<wxListBox>("filMain").SetSelection(0);
  EXPECT_TRUE(CanChoose("Check"));
  const auto settings = campaign.platform.settings.values;
  campaign.platform.message_loop.on_yield = [&] { ExpectUsable(false); };
  Check();
  EXPECT_THAT(dialogs.texts,
              ElementsAre("Checked 1 file: nothing was found. No output was written."));
  EXPECT_EQ(campaign.platform.settings.values, settings);

  Choose(*window_, "optFolders");
  Find<FileChooser>(*window_, "FileChooser").SetPath(campaign.folder);
  const auto stored = campaign.platform.settings.values;
  Check();
  ASSERT_EQ(dialogs.texts.size(), 2u) << "one message for everything";
  EXPECT_THAT(dialogs.texts.back(), HasSubstr("Checked 4 files: 2 problems, "));
  for (const char* found : {"Duplicate key in file", "b/notes-1.xls", "is no number"})
    EXPECT_THAT(dialogs.texts.back(), HasSubstr(found));
  EXPECT_EQ(campaign.platform.settings.values, stored);
  EXPECT_EQ(campaign.platform.files.Content("/out/all.xls"), "kept");
  EXPECT_THAT(campaign.platform.files.Content(kReport), HasSubstr("Duplicate key"));
  ExpectUsable(true);

  // While the files are counted, and before a file is read.
  campaign.platform.message_loop.on_yield = [&] { Run(); };
  for (const bool counting : {true, false}) {
    dialogs.texts.clear();
    dialogs.button_answers = {"Yes, Stop.", "OK"};
    if (!counting) dialogs.button_answers.push_front("Continue");
    Check();
    EXPECT_EQ(dialogs.texts.size(), counting ? 2u : 3u) << "questions and one summary";
    EXPECT_THAT(dialogs.texts.back(),
                HasSubstr(counting ? "The check was stopped before the first file."
                                   : "The check was stopped at file 1 of 4: nothing was found"));
    ExpectUsable(true);
  }
  campaign.platform.message_loop.on_yield = {};
  dialogs.texts.clear();
  campaign.platform.files.Deny(campaign.Path("b"));
  Check();
  EXPECT_THAT(dialogs.texts, ElementsAre(HasSubstr("Permission denied: /data/screen/b")));
  EXPECT_EQ(campaign.platform.settings.values, stored);
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
  const wxSize design = window_->GetClientSize();
  EXPECT_EQ(design, window_->GetSizer()->ComputeFittingClientSize(window_.get()));
  ServeEvents();
  EXPECT_EQ(design, window_->GetClientSize()) << "the frame must not take from the controls";
  window_->SetSize(window_->GetSize() + wxSize(80, 60));
  WaitUntil([&] { return window_->GetClientSize() == design; });
}

}  // namespace
}  // namespace korvex
