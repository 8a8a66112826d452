// The whole desktop program over the real machine: its windows, files and settings file, and the
// sample campaign. Only the platform's standard message boxes are answered for the user.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/listbox.h>
#include <wx/notebook.h>
#include <wx/utils.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "errors/clsAppLog.h"
#include "platform/native_platform.h"
#include "spreadsheet/embedded_application.h"
#include "tests/support/fakes.h"
#include "tests/ui/ui_support.h"
#include "ui/window_services.h"
#include "ui/wx_text.h"

namespace korvex {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

struct AnsweredDialogs : WindowDialogs {
  BoxAnswer ShowPlain(const PlainMessage& message) override {
    texts.push_back(message.text);
    return message.buttons == BoxButtons::kOk ? BoxAnswer::kOk : BoxAnswer::kCancel;
  }

  std::vector<std::string> texts;
};

// As the program names it.
std::string Named(fs::path path) {
  const std::u8string name = path.make_preferred().u8string();
  return {name.begin(), name.end()};
}

std::string ContentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class DesktopTest : public testing::Test {
 protected:
  DesktopTest() {
    fs::create_directories(folder_ / "program" / "bin");
    fs::copy(SAMPLES "/campaign", folder_ / "campaign", fs::copy_options::recursive);
    fs::remove(folder_ / "campaign" / "campaign.xls");
    native_.emplace(Named(folder_ / "korvex.ini"));
    Services services = native_->Provided();
    embedded_.emplace(*services.files);
    services.spreadsheet = &*embedded_;
    services.mail = &mail_;
    services.shell = &shell_;
    services.sound = &sound_;
    services.dialogs = &dialogs_;
    services.message_loop = &message_loop_;
    services.main_window = &main_window_;
    services.program_folder = Named(folder_ / "program" / "bin");
    services.user_folder = Named(folder_ / "user");
    services_.emplace(services);
  }
  ~DesktopTest() override {
    if (main_window_.Window()) main_window_.Window()->Close();
    WaitUntil([this] { return !main_window_.Window(); });
    fs::remove_all(folder_);
  }

  // Opens the window on the campaign, as a user who chooses its folder.
  void Open() {
    main_window_.Show();
    The<FileChooser>("FileChooser").SetPath(Named(folder_ / "campaign"));
  }
  template <class Control>
  Control& The(const std::string& name) {
    return Find<Control>(*main_window_.Window(), name);
  }
  void ChooseOptions(ModalDriver::Step step) {
    driver_.Expect(std::move(step));
    ChooseMenu(*main_window_.Window(), "File", "Options...");
  }
  // A message box of ours that is to show this text, answered by its button of that number.
  void ExpectMessage(const std::string& text, int button) {
    driver_.Expect([text, button](wxDialog& box) {
      EXPECT_EQ(Find<wxTextCtrl>(box, "txtMessage").GetValue(), text);
      Click(Find<wxButton>(box, "cmdMain" + std::to_string(button)));
    });
  }
  void Run() { Click(The<wxButton>("cmdProcess")); }
  // What the command line makes of the campaign and the settings.
  void Convert(const std::string& options) {
    const auto quoted = [](const fs::path& path) { return '"' + Named(path) + '"'; };
    const std::string command = quoted(fs::absolute(KORVEX_CONVERT)) + " --quiet " + options +
                                " --settings " + quoted(folder_ / "korvex.ini") + " " +
                                quoted(folder_ / "campaign");
    wxArrayString printed, told;
    EXPECT_EQ(wxExecute(ToWx(command), printed, told), 0) << FromWx(wxJoin(told, '\n'));
  }
  fs::path Output() const { return folder_ / "campaign" / "flat.xls"; }

  const fs::path folder_ =
      fs::temp_directory_path() / ("korvex-desktop-" + std::to_string(std::random_device()()));
  std::optional<NativePlatform> native_;
  std::optional<EmbeddedSpreadsheet> embedded_;
  FakeMail mail_;
  FakeShell shell_;
  FakeSound sound_;
  AnsweredDialogs dialogs_;
  WindowMessageLoop message_loop_;
  OpenMainWindow main_window_;
  std::optional<InstalledServices> services_;
  ModalDriver driver_;
};

void Pick(wxDialog& options, const char* column, const char* button) {
  auto& available = Find<wxListBox>(options, "lstAvailableCols");
  ASSERT_TRUE(available.SetStringSelection(column)) << column;
  Click(Find<wxButton>(options, button));
}

// What samples/korvex.ini holds, chosen by hand.
void ChooseAsTheSamplesDo(wxDialog& options) {
  auto& by_folder = Find<wxRadioButton>(options, "optOutputFileByFolder");
  by_folder.SetValue(true);
  Send(by_folder, wxEVT_RADIOBUTTON);
  Find<wxTextCtrl>(options, "txtFilename").SetValue("flat.xls");
  Find<wxCheckBox>(options, "chkLaunchOutputFile").SetValue(false);
  Find<wxRadioButton>(options, "optAutoReplaceTrue").SetValue(true);
  Find<wxNotebook>(options, "tabOptions").SetSelection(1);
  for (const char* key : {"compound ID", "cell plate #", "cell plate wells ##"}) {
    Pick(options, key, "cmdToKeys");
  }
  for (const char* column :
       {"cell plate #", "cell plate wells ##", "compound ID", "compound #", "Date", "day_num"}) {
    Pick(options, column, "cmdToOutput");
  }
  EXPECT_TRUE(Find<wxChoice>(options, "cboDataCol").SetStringSelection("Delta OD"));
  Click(Find<wxButton>(options, "cmdOK"));
}

TEST_F(DesktopTest, ConvertsACampaignLikeTheCommandLine) {
  Open();
  ChooseOptions(ChooseAsTheSamplesDo);
  ExpectMessage("Process finished!", 0);
  Run();
  EXPECT_THAT(dialogs_.texts, IsEmpty());
  const std::string by_window = ContentOf(Output());

  // The settings of the window serve the command line, with the same outcome.
  fs::remove(Output());
  Convert("");
  EXPECT_FALSE(by_window.empty());
  EXPECT_TRUE(by_window == ContentOf(Output()));
}

TEST_F(DesktopTest, TakesTheSettingsOfTheCommandLine) {
  Convert("--save-settings --output \"" + Named(Output()) +
          "\" --key \"compound ID\" --key \"cell plate #\" --key \"cell plate wells ##\""
          " --column Date --data \"Delta OD\"");
  main_window_.Show();
  EXPECT_EQ(main_window_.ProcessingFolder(), Named(folder_ / "campaign"));
  ChooseOptions([&](wxDialog& options) {
    EXPECT_EQ(Find<wxTextCtrl>(options, "txtOutputFile").GetValue(), ToWx(Named(Output())));
    EXPECT_EQ(Find<wxListBox>(options, "lstKeyColumns").GetString(1), "cell plate #");
    EXPECT_EQ(Find<wxListBox>(options, "lstOutputColumns").GetString(0), "Date");
    EXPECT_EQ(Find<wxChoice>(options, "cboDataCol").GetStringSelection(), "Delta OD");
    options.Close();
  });
}

TEST_F(DesktopTest, StopsWithinOneFileWhenTheUserConfirms) {
  Open();
  ChooseOptions(ChooseAsTheSamplesDo);
  for (const bool stop : {false, true}) {
    fs::remove(Output());
    // Served by the run itself, as a user's click is.
    wxTheApp->CallAfter([this] {
      EXPECT_FALSE(main_window_.Window()->Close());
      Run();
    });
    ExpectMessage("Stop Process?", stop ? 0 : 1);
    if (!stop) ExpectMessage("Process finished!", 0);
    Run();
    EXPECT_EQ(fs::exists(Output()), !stop);
    EXPECT_EQ(The<wxButton>("cmdProcess").GetLabel(), "&Run!");
  }
}

}  // namespace
}  // namespace korvex
