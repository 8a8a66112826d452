// The main window over a campaign in memory.
#include "ui/frmMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <wx/listbox.h>

#include "errors/clsAppLog.h"
#include "platform/services.h"
#include "tests/support/campaign.h"
#include "tests/ui/ui_support.h"
#include "ui/window_services.h"

namespace korvex {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class MainWindowTest : public testing::Test {
 protected:
  MainWindowTest() {
    Set("Last Path", campaign.folder);
    campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
    campaign.Put("a/P-1-2.xls", {{1, "K1", 7, 0.2}});
  }
  ~MainWindowTest() override {
    if (window_) {
      window_->Close();
      WaitUntil([this] { return !window_; });
    }
  }

  frmMain& Open() {
    window_ = &main_window_.Show();
    return *window_;
  }
  void Set(const char* key, const std::string& value) { campaign.Set("Main Section", key, value); }
  std::vector<std::string>& Texts() { return campaign.platform.dialogs.texts; }

  template <class Control>
  Control& The(const std::string& name) {
    return Find<Control>(*window_, name);
  }
  std::string Label(const std::string& name) {
    return The<wxControl>(name).GetLabelText().utf8_string();
  }
  wxButton& Run() { return The<wxButton>("cmdProcess"); }
  std::vector<std::string> Files() {
    std::vector<std::string> names;
    for (const wxString& name : The<wxListBox>("filMain").GetStrings()) {
      names.push_back(name.utf8_string());
    }
    return names;
  }
  void Choose(const std::string& option) {
    auto& button = The<wxRadioButton>(option);
    button.SetValue(true);
    Send(button, wxEVT_RADIOBUTTON);
  }
  void Select(const std::vector<int>& files) {
    auto& list = The<wxListBox>("filMain");
    for (const int file : files) list.SetSelection(file);
    Send(list, wxEVT_LISTBOX);
  }
  void ExpectIdle() {
    EXPECT_EQ(Run().GetLabel(), "&Run!");
    EXPECT_TRUE(window_->GetMenuBar()->IsEnabledTop(0) && window_->GetMenuBar()->IsEnabledTop(1));
    for (const char* name : {"fraMain", "fraCurrentMode", "optFiles", "txtPattern", "filMain"}) {
      EXPECT_TRUE(The<wxWindow>(name).IsEnabled()) << name;
    }
    EXPECT_EQ(Label("lblMessages"), "Ready");
  }

  Campaign campaign;
  OpenMainWindow main_window_;
  wxWeakRef<frmMain> window_;
};

TEST_F(MainWindowTest, StartsWhereTheUserLeftIt) {
  Open();
  EXPECT_EQ(window_->GetTitle(), std::string("KORVEX ") + kProgramVersion);
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.folder);
  EXPECT_EQ(Label("lblFolder"), "/.../data/screen ");
  EXPECT_TRUE(The<wxRadioButton>("optFolders").GetValue());
  ExpectIdle();
  EXPECT_THAT(Texts(), IsEmpty());
  EXPECT_EQ(AppLog().Filename(), "/opt/korvex/bin/../AppErr/KORVEX.LOG");

  Choose("optFiles");
  window_->Close();
  WaitUntil([this] { return !window_; });
  Open();
  EXPECT_TRUE(The<wxRadioButton>("optFiles").GetValue());
}

TEST_F(MainWindowTest, StartsAboveAFolderThatIsGoneAndSaysSo) {
  campaign.platform.files.AddFolder(campaign.Path("R&D"));
  Set("Last Path", campaign.Path("R&D/b/c"));
  Open();
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.Path("R&D"));
  EXPECT_EQ(Label("lblFolder"), "/.../screen/R&D ");
  EXPECT_THAT(Label("lblMessages"), testing::HasSubstr("/data/screen/R&D/b/c"));
  EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(MainWindowTest, StartsInTheHomeFolderWhenTheSettingsCannotBeRead) {
  campaign.platform.settings.failure = 70;
  Open();
  EXPECT_EQ(main_window_.ProcessingFolder(), "/home/user");
  EXPECT_THAT(Texts(), ElementsAre(testing::StartsWith("An error occurred while loading.")));
  EXPECT_THAT(campaign.platform.files.Content("/opt/korvex/AppErr/KORVEX.LOG"),
              testing::HasSubstr("frmMain.Form_Load"));
  ExpectIdle();
}

TEST_F(MainWindowTest, ListsFilesByThePatternUnlessSubFoldersAreProcessed) {
  campaign.platform.files.AddFile(campaign.Path("a/notes.txt"));
  Set("Last Path", campaign.Path("a"));
  Open();
  EXPECT_THAT(Files(), IsEmpty());
  Choose("optFiles");
  EXPECT_THAT(Files(), ElementsAre("P-1-1.xls", "P-1-2.xls"));
  auto& pattern = The<wxTextCtrl>("txtPattern");
  pattern.SetValue("*-2.xls;*.txt");
  EXPECT_THAT(Files(), ElementsAre("notes.txt", "P-1-2.xls"));
  Choose("optFolders");
  EXPECT_THAT(Files(), IsEmpty());
  Choose("optFiles");
  EXPECT_THAT(Files(), ElementsAre("notes.txt", "P-1-2.xls"));
  pattern.SetValue("");
  Choose("optFiles");
  EXPECT_THAT(Files(), ElementsAre("notes.txt", "P-1-1.xls", "P-1-2.xls"));
  EXPECT_THAT(Texts(), IsEmpty());
  pattern.SetValue("a/b");
  EXPECT_THAT(Texts(), ElementsAre("Please insert a valid filename pattern. (Example: *.xls)"));
}

TEST_F(MainWindowTest, ConvertsWhileTheWindowShowsIt) {
  Set("Launch Output File", "1");
  Open();
  std::vector<std::string> seen;
  campaign.platform.message_loop.on_yield = [&] {
    EXPECT_EQ(Run().GetLabel(), "Stop");
    wxMenuBar& menus = *window_->GetMenuBar();
    EXPECT_FALSE(menus.IsEnabledTop(0) || menus.IsEnabledTop(1));
    EXPECT_FALSE(menus.IsEnabled(menus.FindMenuItem("File", "Run")));  // nor does F5 work
    for (const char* name : {"fraMain", "fraCurrentMode", "optFiles", "txtPattern", "filMain"}) {
      EXPECT_FALSE(The<wxWindow>(name).IsThisEnabled()) << name;
    }
    EXPECT_FALSE(window_->Close());
    wxMouseEvent second_press(wxEVT_LEFT_DCLICK);
    Run().HandleWindowEvent(second_press);
    Click(Run());
    seen.push_back(Label("lblMessages") + " " + std::to_string(The<wxGauge>("prg").GetValue()));
  };
  Click(Run());
  EXPECT_THAT(Texts(), ElementsAre("Process finished!"));
  EXPECT_THAT(seen, Contains("Folder 1 of 1, Filename P-1-1 (1 of 2), Sheet 1 of 1 2"));
  EXPECT_EQ(The<wxGauge>("prg").GetRange(), 4);
  EXPECT_EQ(The<wxGauge>("prg").GetValue(), 4);
  EXPECT_EQ(campaign.Output().Value(2, 4).number, 0.2);
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre("/out/all.xls"));
  ExpectIdle();
}

TEST_F(MainWindowTest, ConvertsTheSelectedFiles) {
  Set("Last Path", campaign.Path("a"));
  Open();
  Choose("optFiles");
  Click(Run());
  ChooseMenu(*window_, "File", "Options...");
  EXPECT_THAT(Texts(), ElementsAre("Please select at least one file to process.",
                                   "Please select at least one file to process."));
  ExpectIdle();

  Texts().clear();
  Select({0, 1});
  ChooseMenu(*window_, "File", "Run");
  EXPECT_THAT(Texts(), ElementsAre("Process finished!"));
  EXPECT_EQ(The<wxGauge>("prg").GetRange(), 4);
  EXPECT_EQ(campaign.Output().Value(2, 4).number, 0.2);
}

TEST_F(MainWindowTest, ReturnsToIdleFromARunThatMayNotStart) {
  campaign.platform.files.AddFile("/out/all.xls", "kept");
  Set("Auto-Replace Output files", "0");
  campaign.platform.dialogs.plain_answers = {BoxAnswer::kCancel};
  Open();
  Click(Run());
  EXPECT_THAT(Texts(), ElementsAre("The file \"/out/all.xls\" exists. Would you like to replace "
                                   "it with a new output file?"));
  ExpectIdle();
  EXPECT_EQ(The<wxGauge>("prg").GetValue(), 0);
  EXPECT_EQ(campaign.platform.files.Content("/out/all.xls"), "kept");
}

TEST_F(MainWindowTest, StartsAfreshWhenTheSettingsAreDeleted) {
  Set("Last Path", campaign.Path("a"));
  Open();
  Choose("optFiles");
  campaign.platform.dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kOk};
  ChooseMenu(*window_, "File", "Delete Registry Settings");
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign.Path("a"));
  const wxWeakRef<frmMain> former = window_;
  ChooseMenu(*window_, "File", "Delete Registry Settings");
  WaitUntil([&] { return !former; });
  window_ = main_window_.Window();
  EXPECT_EQ(Texts().front(),
            "This will delete all registry settings and reload the program. Are you sure you want "
            "to proceed?");
  EXPECT_EQ(main_window_.ProcessingFolder(), "/home/user");
  EXPECT_EQ(The<wxTextCtrl>("txtPattern").GetValue(), "*.xls");
  EXPECT_FALSE(campaign.platform.settings.Get("Main Section", "Output File").has_value());
  EXPECT_EQ(AppLog().Filename(), "/opt/korvex/bin/../AppErr/KORVEX.LOG");
}

TEST_F(MainWindowTest, OpensHelpAndTheFileThatIsDoubleClicked) {
  Set("Last Path", campaign.Path("a"));
  Open();
  ChooseMenu(*window_, "Help", "Help");
  Choose("optFiles");
  Select({0});
  campaign.platform.dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kOk};
  Send(The<wxListBox>("filMain"), wxEVT_LISTBOX_DCLICK);
  Send(The<wxListBox>("filMain"), wxEVT_LISTBOX_DCLICK);
  EXPECT_THAT(Texts(), ElementsAre("Open this File?", "Open this File?"));
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
