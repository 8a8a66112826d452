// The whole desktop program over the real machine: its windows, files and settings file, and the
// sample campaign. Only the platform's standard message boxes are answered for the user.

#include <wx/timer.h>
#include <wx/utils.h>

#include "platform/native_platform.h"
#include "spreadsheet/embedded_application.h"
#include "tests/platform/temp_folder.h"
#include "tests/support/fakes.h"
#include "tests/ui/ui_support.h"
#include "ui/window_services.h"

namespace korvex {
namespace {

namespace fs = std::filesystem;

struct AnsweredDialogs : WindowDialogs {
  BoxAnswer ShowPlain(const PlainMessage& message) override {
    texts.push_back(message.text);
    return BoxAnswer::kCancel;
  }
  std::vector<std::string> texts;
};

class DesktopTest : public testing::Test {
 protected:
  DesktopTest() {
    fs::create_directories(PathOf(folder_ / "program/bin"));
    fs::copy(SAMPLES "/campaign", PathOf(campaign_), fs::copy_options::recursive);
    fs::remove(PathOf(folder_ / "campaign/campaign.xls"));
    Services services = native_.Provided();
    services.spreadsheet = &embedded_;
    services.mail = &mail_;
    services.shell = &shell_;
    services.sound = &sound_;
    services.dialogs = &dialogs_;
    services.message_loop = &message_loop_;
    services.main_window = &main_window_;
    services.program_folder = folder_ / "program/bin";
    services.user_folder = folder_ / "user";
    services.cache_folder = folder_ / "cache";
    services_.emplace(services);
  }
  ~DesktopTest() override {
    if (main_window_.Window()) main_window_.Window()->Close();
    WaitUntil([this] { return !main_window_.Window(); });
  }

  // A message box of ours that is to show this text, answered by its button of that number.
  void ExpectMessage(const std::string& text, int button) {
    driver_.Expect([text, button](wxDialog& box) {
      EXPECT_EQ(Find<wxTextCtrl>(box, "txtMessage").GetValue(), text);
      Click(box, "cmdMain" + std::to_string(button));
    });
  }
  // What the sample campaign holds on purpose; answered by "Show Report".
  void ExpectSummary() {
    driver_.Expect([](wxDialog& box) {
      const std::string text = FromWx(Find<wxTextCtrl>(box, "txtMessage").GetValue());
      EXPECT_THAT(text, HasSubstr("the data do not look right"));
      EXPECT_THAT(text, HasSubstr("measured values are no numbers"));
      Click(box, "cmdMain0");
    });
  }
  void Run() { Click(*main_window_.Window(), "cmdProcess"); }
  // Converts the campaign by the command line, which keeps its choices in the settings.
  void Convert() {
    std::string command = '"' + Utf8Of(fs::absolute(KORVEX_CONVERT).make_preferred()) +
                          "\" --quiet --save-settings --data \"Delta OD\"";
    for (const char* key : {"compound ID", "cell plate #", "cell plate wells ##"})
      command += std::string(" --key \"") + key + '"';
    for (const char* column : {"cell plate #", "compound ID", "compound #", "Date", "day_num"})
      command += std::string(" --column \"") + column + '"';
    command += " --settings \"" + folder_ / "korvex.ini" + "\" --output \"" + output_ + "\" \"" +
               campaign_ + '"';
    wxArrayString printed, told;
    EXPECT_EQ(wxExecute(ToWx(command), printed, told), 0) << FromWx(wxJoin(told, '\n'));
  }

  const TempFolder folder_;
  const std::string campaign_ = folder_ / "campaign";
  const std::string output_ = folder_ / "campaign/flat.xls";
  NativePlatform native_{folder_ / "korvex.ini"};
  EmbeddedSpreadsheet embedded_{*native_.Provided().files};
  FakeMail mail_;
  FakeShell shell_;
  FakeSound sound_;
  AnsweredDialogs dialogs_;
  WindowMessageLoop message_loop_;
  OpenMainWindow main_window_;
  std::optional<InstalledServices> services_;
  ModalDriver driver_;
};

TEST_F(DesktopTest, ConvertsACampaignLikeTheCommandLineWithItsSettings) {
  Convert();
  const std::string by_command = Content(output_);
  EXPECT_FALSE(by_command.empty());
  fs::remove(PathOf(output_));
  main_window_.Show();
  EXPECT_EQ(main_window_.ProcessingFolder(), campaign_);
  driver_.Expect([&](wxDialog& options) {
    EXPECT_EQ(Find<wxTextCtrl>(options, "txtOutputFile").GetValue(), ToWx(output_));
    EXPECT_EQ(Items(options, "lstKeyColumns").at(1), "cell plate #");
    EXPECT_EQ(Items(options, "lstOutputColumns").at(3), "Date");
    Click(options, "cmdOK");  // which stores everything anew
  });
  ChooseMenu(*main_window_.Window(), "File", "Options...");
  ExpectMessage("Process finished!", 0);
  ExpectSummary();
  Run();
  EXPECT_TRUE(by_command == Content(output_));
  const std::string report = folder_ / "cache/last-run.html";
  EXPECT_THAT(shell_.opened, ElementsAre(report, output_));
  if (native_.Provided().files->Separator() == '/') {
    EXPECT_EQ(fs::status(PathOf(report)).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
  }
  EXPECT_THAT(dialogs_.texts, IsEmpty());
}

TEST_F(DesktopTest, StopsWithinOneFileWhenTheUserConfirms) {
  Convert();
  main_window_.Show();
  for (const bool stop : {false, true}) {
    fs::remove(PathOf(output_));
    // Served by the run itself, as a user's clicks are; the first one comes too early.
    wxTimer clicks;
    clicks.Bind(wxEVT_TIMER, [&](wxTimerEvent&) {
      for (wxWindow* window : wxTopLevelWindows) {
        if (dynamic_cast<wxDialog*>(window)) return;
      }
      EXPECT_FALSE(main_window_.Window()->Close());
      Run();
    });
    clicks.Start(1);
    driver_.Expect([&clicks, stop](wxDialog& box) {
      clicks.Stop();
      EXPECT_EQ(Find<wxTextCtrl>(box, "txtMessage").GetValue(), "Stop Process?");
      Click(box, stop ? "cmdMain0" : "cmdMain1");
    });
    if (!stop) {
      ExpectMessage("Process finished!", 0);
      ExpectSummary();
    }
    Run();
    EXPECT_EQ(fs::exists(PathOf(output_)), !stop);
  }
}

}  // namespace
}  // namespace korvex
