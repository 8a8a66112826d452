#include "engine/MainRun.h"

#include <gmock/gmock.h>

#include "tests/support/campaign.h"

namespace korvex {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

struct RecordedView : RunView {
  void EnterRunning() override { calls.push_back("running"); }
  void LeaveRunning() override { calls.push_back("idle"); }
  void ErrorMessage(const std::string& text) override { calls.push_back(text); }
  void Message(const std::string& text) override { calls.push_back(text); }
  void ProcessedFile() override { calls.push_back("processed"); }
  void SetMessage(const std::string& text) override { calls.push_back(text); }
  void SetProgress(std::int32_t value, std::int32_t maximum) override {
    calls.push_back(std::to_string(value) + "/" + std::to_string(maximum));
  }
  void RunEnded(const RunRecord& ended) override {
    calls.push_back("ended");
    record = ended;
  }

  std::vector<std::string> calls;
  RunRecord record;  // of the last run
};

class MainRunTest : public testing::Test {
 protected:
  RunOutcome Start(const std::vector<std::string>& files = {}) {
    return run.Start({campaign.folder, files});
  }
  const std::vector<std::string>& Texts() const { return campaign.platform.dialogs.texts; }

  Campaign campaign;
  RecordedView view;
  MainRun run{view};
};

TEST_F(MainRunTest, ShowsTheWayOfARunAndOpensItsOutput) {
  campaign.Set("Main Section", "Launch Output File", "-1");
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.Put("b/P-1-2.xls", {{1, "K1", 7, 0.2}});
  campaign.platform.files.AddFolder("/data/screen/b/raw");
  campaign.platform.files.Deny("/data/screen/b/raw");  // which no run reads
  EXPECT_EQ(Start(), RunOutcome::kFinished);
  EXPECT_THAT(view.calls,
              ElementsAre("running", "Initializing...", "1/4",
                          "Folder 1 of 2, Filename P-1-1 (1 of 1), Sheet 1 of 1", "processed",
                          "Folder 2 of 2, Filename P-1-2 (1 of 1), Sheet 1 of 1", "processed",
                          "4/4", "ended", "idle", "Ready"));
  EXPECT_THAT(Texts(), ElementsAre("Process finished!"));
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre("/out/all.xls"));
  EXPECT_EQ(campaign.platform.settings.Get("Main Section", "Last Path"), "/data/screen");
}

TEST_F(MainRunTest, RefusesAnEmptySelectionAndStoresNothing) {
  EXPECT_EQ(Start(), RunOutcome::kFailed);
  campaign.ProcessSelectedFiles();
  EXPECT_EQ(Start(), RunOutcome::kFailed);
  EXPECT_THAT(Texts(), ElementsAre("The folder you chose to process has no sub folders.",
                                   "Please select at least one file to process."));
  EXPECT_FALSE(campaign.platform.settings.Get("Main Section", "Last Path").has_value());
  EXPECT_THAT(view.calls, testing::Not(Contains("running")));
}

TEST_F(MainRunTest, RefusesAnOutputFileThatCannotBeWritten) {
  campaign.Put("a/P-1-1.xls", {});
  campaign.platform.files.Deny("/out/denied.xls");
  campaign.platform.files.Fail(FileOperation::kReplace, "/out/kept by its folder.xls",
                               error_number::kPermissionDenied);
  for (const char* name :
       {"missing/all.xls", "denied.xls", "kept by its folder.xls", "all.ods", ""}) {
    campaign.Set("Main Section", "Output File", name);
    EXPECT_EQ(Start(), RunOutcome::kFailed);
    EXPECT_EQ(Texts().back(),
              "Please specify a valid filename for the output file. \r\n(File could be in use).");
    EXPECT_THAT(campaign.platform.dialogs.plain.back().cause, HasSubstr(name));
  }
  EXPECT_EQ(campaign.spreadsheet.running, 0);
}

TEST_F(MainRunTest, AsksBeforeItReplacesTheOutputFile) {
  campaign.Set("Main Section", "Auto-Replace Output files", "0");
  campaign.Put("a/P-1-1.xls", {});
  EXPECT_EQ(Start(), RunOutcome::kFinished) << "there is none yet";
  campaign.platform.dialogs.texts.clear();
  campaign.platform.dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kOk};
  EXPECT_EQ(Start(), RunOutcome::kFailed);
  EXPECT_EQ(Start(), RunOutcome::kFinished);
  const char* const question =
      "The file \"/out/all.xls\" exists. Would you like to replace it with a new output file?";
  EXPECT_THAT(Texts(), ElementsAre(question, question, "Process finished!"));

  campaign.platform.files.DeleteFile("/out/all.xls");
  campaign.platform.message_loop.on_yield = [&] {
    if (run.Running()) campaign.platform.files.AddFile("/out/all.xls", "precious");
  };
  EXPECT_EQ(Start(), RunOutcome::kFailed) << "nobody was asked about the file that appeared";
  EXPECT_EQ(campaign.platform.files.Content("/out/all.xls"), "precious");
  campaign.Set("Main Section", "Auto-Replace Output files", "-1");
  EXPECT_EQ(Start(), RunOutcome::kFinished);
}

TEST_F(MainRunTest, TellsAStopFromAFailure) {
  campaign.Put("a/P-1-1.xls", {});
  for (const bool while_reading : {false, true}) {
    campaign.platform.message_loop.on_yield = [&] {
      if (run.Running() == while_reading) run.Stop();
    };
    view.calls.clear();
    EXPECT_EQ(Start(), RunOutcome::kStopped);
    EXPECT_EQ(testing::Value(view.calls, Contains("1/3")), while_reading)
        << "else while the files are counted";
    EXPECT_FALSE(run.Running());
    run.Stop();
  }
  EXPECT_EQ(campaign.spreadsheet.running, 0);

  campaign.platform.message_loop.on_yield = nullptr;
  campaign.platform.files.AddFile("/data/screen/a/broken.xls");
  EXPECT_EQ(Start(), RunOutcome::kFailed);
}

TEST_F(MainRunTest, ReportsWhatTheSettingsOrTheDiskRefuse) {
  campaign.Put("a/P-1-1.xls", {});
  campaign.platform.files.AddFile("/out/all.xls", "former");
  campaign.Set("Main Section", "Auto-Replace Output files", "perhaps");
  EXPECT_EQ(Start(), RunOutcome::kFailed);
  EXPECT_EQ(view.calls.back(), "0/3");
  EXPECT_THAT(campaign.platform.dialogs.plain.back().cause, HasSubstr("\"perhaps\""));
  campaign.platform.files.Remove("/data/screen");
  EXPECT_EQ(Start(), RunOutcome::kFailed);
  EXPECT_THAT(campaign.platform.dialogs.plain.back().cause, HasSubstr("/data/screen"));
  EXPECT_THAT(Texts(), testing::Each(HasSubstr("\"Form1.MainRun\"")));
}

}  // namespace
}  // namespace korvex
