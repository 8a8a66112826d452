#include "engine/MainRun.h"

#include "tests/engine/engine_test.h"

namespace korvex {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

class MainRunTest : public EngineTest {
 protected:
  RunOutcome Start() { return run.Start({campaign.folder, {}}); }

  MainRun run{view};
};

TEST_F(MainRunTest, ShowsTheWayOfARunAndOpensItsOutput) {
  campaign.Set("Main Section", "Launch Output File", "-1");
  Put("a/P-1-1.xls");
  Put("b/P-1-2.xls");
  files.AddFile("/data/screen/a/old/P-1-1.xls");  // which counts
  files.AddFolder("/data/screen/b/raw");
  files.Deny("/data/screen/b/raw");  // which no run reads
  EXPECT_EQ(Start(), RunOutcome::kFinished);
  EXPECT_THAT(view.calls,
              ElementsAre("running", "Initializing...", "1/4", "1/5",
                          "Folder 1 of 2, Filename P-1-1 (1 of 1), Sheet 1 of 1", "processed",
                          "Folder 2 of 2, Filename P-1-2 (1 of 1), Sheet 1 of 1", "processed",
                          "5/5", "ended", "idle", "Ready"));
  EXPECT_EQ(Told(), "Process finished!");
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre("/out/all.xls"));
  EXPECT_EQ(campaign.platform.settings.Get("Main Section", "Last Path"), "/data/screen");
}

TEST_F(MainRunTest, RefusesWhatCannotBeRun) {
  files.Deny("/out/denied.xls");
  files.Fail(FileOperation::kReplace, "/out/kept by its folder.xls",
             error_number::kPermissionDenied);
  const auto set = [&](const char* key, const char* value) {
    campaign.Set("Main Section", key, value);
  };
  const std::string no_output =
      "Please specify a valid filename for the output file. \r\n(File could be in use).";
  const struct {
    std::string text;
    const char* cause;
    std::function<void()> prepare;
  } cases[] = {
      {"The folder you chose to process has no sub folders.", "", [] {}},
      {"\"Form1.MainRun\"", "\"perhaps\"", [&] { set("Auto-Replace Output files", "perhaps"); }},
      {no_output, "missing", [&] { set("Output File", "missing/all.xls"); }},
      {no_output, "denied", [&] { set("Output File", "denied.xls"); }},
      {no_output, "kept by its folder", [&] { set("Output File", "kept by its folder.xls"); }},
      {no_output, "named like .ods", [&] { set("Output File", "all.ods"); }},
      {no_output, "no file name. Set one under File > Options..., General Options",
       [&] { set("Output File", ""); }},
      {"\"Form1.MainRun\"", "/data/screen", [&] { files.Remove(campaign.folder); }},
      {"Please select at least one file to process.", "",
       [&] {
         campaign.ProcessSelectedFiles();
         set("Last Path", "former");
       }},
  };
  for (const auto& c : cases) {
    Forget();
    c.prepare();
    EXPECT_EQ(Start(), RunOutcome::kFailed);
    EXPECT_THAT(Texts(), ElementsAre(HasSubstr(c.text)));
    EXPECT_THAT(campaign.platform.dialogs.plain.back().cause, HasSubstr(c.cause));
    Put("a/P-1-1.xls");
  }
  EXPECT_THAT(view.calls, testing::Not(Contains("running")));
  EXPECT_EQ(campaign.platform.settings.Get("Main Section", "Last Path"), "former");
  EXPECT_EQ(campaign.spreadsheet.running, 0);
}

TEST_F(MainRunTest, RefusesToWriteOverAnInput) {
  const auto place = [&](const char* folder, const char* name) {
    campaign.Set("Main Section", "Output Path", folder);
    campaign.Set("Main Section", "Output File", name);
  };
  place("/data/screen/a/", "p-1-1.xls");
  for (const char* name : {"a/P-1-1.xls", "a/p-1-1.xls", "b/long.xlsx"}) Put(name);
  files.AddFile("/data/screen/b/run.html", "<html>");
  const std::string before = files.Content("/data/screen/a/p-1-1.xls");
  const std::string refusal =
      "is itself one of the files to process. Choose another name or folder for it, or move the "
      "file away.";
  const auto refused = [&](const RunOptions& options, const std::vector<std::string>& selected) {
    Forget();
    EXPECT_EQ(run.Start({campaign.folder, selected}, options), RunOutcome::kFailed);
    return Told();
  };
  EXPECT_THAT(refused({}, {}), HasSubstr("The output file \"/.../screen/a/p-1-1.xls\" " + refusal));
  EXPECT_THAT(refused({.wide = false, .long_form = "/data/screen/b/long.xlsx"}, {}),
              HasSubstr("The long form \"/.../screen/b/long.xlsx\" " + refusal));
  const RunOptions reporting{.wide = false,
                             .long_form = "/out/long.csv",
                             .reports = {"/out/a.html", "/data/screen/b/run.html"}};
  EXPECT_THAT(refused(reporting, {}),
              HasSubstr("The report \"/.../screen/b/run.html\" " + refusal));
  EXPECT_FALSE(campaign.HasOutput());
  EXPECT_THAT(view.record.options.reports, ElementsAre("/out/a.html")) << "which is still written";
  refused({.check = true}, {});
  EXPECT_THAT(view.record.problems[0].text, HasSubstr(refusal));
  EXPECT_EQ(view.record.inputs.size(), 4u) << "a check goes on";

  campaign.ProcessSelectedFiles();
  EXPECT_THAT(refused({}, {"/data/screen/a/p-1-1.xls"}), HasSubstr(refusal));
  EXPECT_EQ(run.Start({campaign.folder, {"/data/screen/a/P-1-1.xls"}}), RunOutcome::kFinished)
      << "another file, whose name has other letter case";
  EXPECT_NE(files.Content("/data/screen/a/p-1-1.xls"), before);
}

TEST_F(MainRunTest, AsksBeforeItReplacesTheOutputFile) {
  campaign.Set("Main Section", "Auto-Replace Output files", "0");
  Put("a/P-1-1.xls");
  EXPECT_EQ(Start(), RunOutcome::kFinished) << "there is none yet";
  campaign.platform.dialogs.plain_answers = {BoxAnswer::kCancel, BoxAnswer::kOk};
  EXPECT_EQ(Start(), RunOutcome::kFailed);
  EXPECT_EQ(Start(), RunOutcome::kFinished);
  const char* const question =
      "The file \"/out/all.xls\" exists. Would you like to replace it with a new output file?";
  EXPECT_THAT(Texts(), ElementsAre("Process finished!", question, question, "Process finished!"));

  files.Remove("/out/all.xls");
  files.AddFile("/out/all (2).xls", "older");
  on_yield = [&] {
    if (run.Running()) files.AddFile("/out/all.xls", "precious");
  };
  EXPECT_EQ(Start(), RunOutcome::kFailed) << "nobody was asked about the file that appeared";
  EXPECT_THAT(Told(), HasSubstr("/out/all.xls appeared during the run and was not replaced, since "
                                "nobody was asked. The output of the run is in /out/all (3).xls."));
  EXPECT_EQ(files.Content("/out/all.xls"), "precious");
  EXPECT_GT(files.Content("/out/all (3).xls").size(), 1000u);
  campaign.Set("Main Section", "Auto-Replace Output files", "-1");
  EXPECT_EQ(Start(), RunOutcome::kFinished);
}

TEST_F(MainRunTest, TellsAStopFromAFailure) {
  Put("a/P-1-1.xls");
  Put("a/P-1-2.xls");
  for (const bool while_reading : {false, true}) {
    on_yield = [&] {
      if (run.Running() == while_reading) run.Stop();
    };
    Forget();
    EXPECT_EQ(Start(), RunOutcome::kStopped);
    EXPECT_EQ(testing::Value(view.calls, Contains("1/4")), while_reading)
        << "else while the files are counted";
    EXPECT_FALSE(run.Running());
  }
  run.Stop();
  EXPECT_EQ(campaign.spreadsheet.running, 0);
  on_yield = nullptr;
  files.AddFile("/data/screen/a/broken.xls");
  EXPECT_EQ(Start(), RunOutcome::kFailed);
  EXPECT_EQ(view.calls.back(), "0/5");
}

}  // namespace
}  // namespace korvex
