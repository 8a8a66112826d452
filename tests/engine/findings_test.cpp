#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "engine/MainRun.h"
#include "engine/plate_layout.h"
#include "tests/engine/engine_test.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Rows = std::vector<std::vector<TestCell>>;
using Files = std::map<std::string, Rows>;

constexpr const char* kKeys[] = {"K0", "K1", "K2", "K3", "L0", "L1", "L2", "L3"};

Rows Plate(int first) {
  Rows rows;
  for (int i = 0; i < 4; ++i) rows.push_back({i + 1, kKeys[first + i], 7, 0.5});
  return rows;
}

Rows With(Rows rows, std::size_t row, std::size_t column, TestCell cell) {
  rows[row][column] = cell;
  return rows;
}

// A campaign of its own, and what a run on it found.
struct Found {
  explicit Found(const Files& files, const std::vector<std::string>& keys = {"compound ID"},
                 const RunOptions& options = {}) {
    campaign.SetKeys(keys);
    for (const auto& [name, rows] : files) campaign.Put(name, rows);
    outcome = run.Start({campaign.folder, {}}, options);
  }
  // "kind count | file row key column detail" of each finding, the last four of its first place.
  std::vector<std::string> Findings() const {
    std::vector<std::string> found;
    for (const Finding& finding : view.record.findings.All()) {
      const FindingPlace& place = finding.places.front();
      found.push_back(std::string(NameOf(finding.kind)) + " " + std::to_string(finding.count) +
                      " | " + place.file + " " + std::to_string(place.row) + " " + place.key + " " +
                      place.column + " " + place.detail);
    }
    return found;
  }

  Campaign campaign;
  RecordedView view;
  MainRun run{view};
  RunOutcome outcome = RunOutcome::kFailed;
};

// Two sub-folders with two replications each, and nothing wrong.
const Files kClean = {{"a/P-1-1.xls", Plate(0)},
                      {"a/P-1-2.xls", Plate(0)},
                      {"b/Q-1-1.xls", Plate(4)},
                      {"b/Q-1-2.xls", Plate(4)}};

TEST(Findings, TellOneThingForOneFlaw) {
  EXPECT_THAT(Found(kClean).Findings(), IsEmpty());
  Rows blank_below = Plate(0);
  blank_below.push_back({CellValue(), "L0", 7, 0.5});
  blank_below.push_back({6, "L1", 7, 0.5});
  Rows twice = Plate(0);
  twice.push_back({"#", "compound ID", "plate", "Delta OD"});
  const struct {
    const char* what;
    Files changed;  // rows of a file, which is left out when there are none
    const char* finding;
  } cases[] = {
      {"a gap in the first sub-folder",
       {{"a/P-1-2.xls", {}}, {"a/P-1-3.xls", Plate(0)}, {"b/Q-1-3.xls", Plate(4)}},
       "misplaced-replication 2 | a/P-1-3.xls 0  B replication 3 (\"C\") stands under \"B\""},
      {"a gap of more than six",
       {{"a/P-1-2.xls", {}}, {"a/P-1-9.xls", Plate(0)}, {"b/Q-1-1.xls", {}}, {"b/Q-1-2.xls", {}}},
       "overwritten-header 1 | a/P-1-9.xls 0  row_num replication 9 (\"I\") stands under "
       "\"row_num\""},
      {"a blank row", {{"a/P-1-1.xls", blank_below}}, "unread-rows 2 | a/P-1-1.xls 7   "},
      {"a header row at the end",
       {{"a/P-1-1.xls", twice}, {"a/P-1-2.xls", {}}},
       "repeated-header 1 | a/P-1-1.xls 7   the rows above row 7 were not read"},
      {"another plate for one key",
       {{"a/P-1-2.xls", With(Plate(0), 2, 2, 8)}},
       "conflicting-output 1 | a/P-1-2.xls 5 compound ID=K2; plate \"8\" here, \"7\" in the "
       "output"},
      {"an empty data cell",
       {{"a/P-1-2.xls", With(Plate(0), 1, 3, CellValue())}},
       "incomplete-replication 1 | a/P-1-2.xls 4 compound ID=K1; Delta OD replication 2 is blank "
       "here"},
      {"a key without a row",
       {{"a/P-1-2.xls", With(Plate(0), 3, 1, "K9")}},
       "incomplete-replication 2 | a/P-1-1.xls 6 compound ID=K3;  replication 2 is missing"},
      {"a text for a value",
       {{"a/P-1-2.xls", With(Plate(0), 1, 3, "OVRFLW")}},
       "not-a-number 1 | a/P-1-2.xls 4 compound ID=K1; Delta OD \"OVRFLW\""},
      {"an error for a value",
       {{"a/P-1-2.xls", With(Plate(0), 1, 3, CellValue::ErrorCode(42))}},
       "not-a-number 1 | a/P-1-2.xls 4 compound ID=K1; Delta OD \"Error 2042\""},
      {"a decimal comma",
       {{"a/P-1-2.xls", With(Plate(0), 1, 3, "0,110")}},
       "number-as-text 1 | a/P-1-2.xls 4 compound ID=K1; Delta OD \"0,110\""},
      {"blanks among digits",
       {{"a/P-1-2.xls", With(Plate(0), 1, 3, "1 000.5\xC2\xA0")}},
       "number-as-text 1 | a/P-1-2.xls 4 compound ID=K1; Delta OD \"1 000.5\xC2\xA0\""},
      {"a folder below a sub-folder",
       {{"a/raw/P-1-5.xls", Plate(0)}},
       "skipped-folder 1 | a/raw 0   "},
      {"a replication that is rounded",
       {{"a/P-1-2.xls", {}}, {"a/P-1-1.6.xls", Plate(0)}},
       "rounded-number 1 | a/P-1-1.6.xls 0   replication \"1.6\" counts as 2"},
  };
  for (const auto& c : cases) {
    Files files = kClean;
    for (const auto& [name, rows] : c.changed) {
      rows.empty() ? void(files.erase(name)) : void(files[name] = rows);
    }
    const Found found(files);
    EXPECT_THAT(found.Findings(), ElementsAre(c.finding)) << c.what;
    EXPECT_EQ(found.outcome, RunOutcome::kFinished) << c.what;
    EXPECT_TRUE(found.campaign.HasOutput()) << c.what;
  }
}

// A campaign on plates: the plate is a key column, the compound the well.
Files Plates(const std::vector<std::string>& wells) {
  static std::vector<std::string> kept;  // cells are views
  kept = wells;
  Rows rows;
  for (const std::string& well : kept) rows.push_back({1, well.c_str(), 7, 0.5});
  return {{"a/P-1-1.xls", rows}};
}

std::vector<std::string> WellsOf96() {
  std::vector<std::string> wells;
  for (int well = 0; well < 96; ++well) wells.push_back(NameOf(Well{well / 12, well % 12}));
  return wells;
}

TEST(Findings, TellKeysThatLookAlikeAndWellsThatNoPlateHas) {
  EXPECT_THAT(Found(Plates(WellsOf96()), {"plate", "compound ID"}).Findings(), IsEmpty());
  const auto with = [](const char* well) {
    std::vector<std::string> wells = WellsOf96();
    wells.push_back(well);
    return Found(Plates(wells), {"plate", "compound ID"}).Findings();
  };
  const std::string alike = "near-equal-keys 1 | a/P-1-1.xls 99 plate=7;compound ID=";
  EXPECT_THAT(with("A1"), ElementsAre(alike + "A1;  beside \"plate=7;compound ID=A01;\""));
  EXPECT_THAT(with("H12 "), ElementsAre(alike + "H12 ;  beside \"plate=7;compound ID=H12;\""));
  EXPECT_THAT(with("B02\xC2\xA0"),
              ElementsAre(alike + "B02\xC2\xA0;  beside \"plate=7;compound ID=B02;\""));
  EXPECT_THAT(with("I13"), ElementsAre("key-outside-plate 1 | a/P-1-1.xls 99 "
                                       "plate=7;compound ID=I13; compound ID \"I13\" is no well of "
                                       "a plate with 96"));
  // Names that are no wells may begin with zeros and differ in them.
  EXPECT_THAT(Found(Plates({"XYZ01", "XYZ1", "KX001", "KX01"})).Findings(), IsEmpty());
}

TEST(Findings, TellColumnsThatAFileLacks) {
  Found found({});
  Campaign& campaign = found.campaign;
  campaign.SetKeys({"compound ID", "plate"});
  campaign.SetOutputs({"plate", "compound ID", "dose"});
  const std::vector<TestCell> headers = {"#", "compound ID", "plate", "dose", "Delta OD"};
  const auto put = [&](const char* name, const char* lacking) {
    Rows rows = {{"12/03/2002 10:15"}, {}, {}};
    const std::vector<TestCell> cells = {1, "K0", 7, 2.5, 0.5};
    for (std::size_t i = 0; i < headers.size(); ++i) {
      if (headers[i].value.text == lacking) continue;
      rows[1].push_back(headers[i]);
      rows[2].push_back(cells[i]);
    }
    campaign.PutSheets(name, {{"data", rows}});
  };
  put("a/P-1-1.xls", "");
  put("a/P-1-2.xls", "dose");
  RecordedView& view = found.view;
  found.run.Start({campaign.folder, {}});
  EXPECT_THAT(found.Findings(), ElementsAre("missing-output-column 1 | a/P-1-2.xls 0  dose "));
  put("a/P-1-2.xls", "plate");
  found.run.Start({campaign.folder, {}});
  EXPECT_EQ(found.Findings().front(), "missing-key-column 1 | a/P-1-2.xls 0  plate ");
  EXPECT_THAT(view.record.problems, IsEmpty());
}

TEST(Findings, NameSelectedFilesFromTheFolderOfTheFirst) {
  Files files = kClean;
  files["b/Q-1-1.xls"] = With(Plate(4), 0, 3, "OVRFLW");
  Found found(files);
  Campaign& campaign = found.campaign;
  campaign.ProcessSelectedFiles();
  found.run.Start(
      {campaign.Path("a"), {campaign.Path("a/P-1-1.xls"), campaign.Path("b/Q-1-1.xls")}});
  EXPECT_THAT(found.Findings(), ElementsAre("not-a-number 1 | ../b/Q-1-1.xls 3 compound ID=L0; "
                                            "Delta OD \"OVRFLW\""));
}

TEST(Findings, KeepTheFirstPlacesAndCountTheOthers) {
  Files files = kClean;
  Rows rows;
  std::vector<std::string> keys;
  for (int i = 0; i < 50; ++i) keys.push_back("N" + std::to_string(i));
  for (const std::string& key : keys) rows.push_back({1, key.c_str(), 7, "OVRFLW"});
  files = {{"a/P-1-1.xls", rows}};
  const Found found(files);
  const Finding finding = found.view.record.findings.All().at(0);
  EXPECT_EQ(finding.count, 50u);
  EXPECT_EQ(finding.places.size(), Findings::kPlacesKept);
  EXPECT_THAT(finding.text, HasSubstr("50 measured values are no numbers"));
}

TEST(Findings, FailAStrictRunBeforeAnythingIsWritten) {
  Files files = kClean;
  files["a/P-1-2.xls"] = With(Plate(0), 1, 3, "OVRFLW");
  RunOptions options;
  options.strict = true;
  options.long_form = "/out/long.csv";
  Found found(files, {"compound ID"}, options);
  EXPECT_EQ(found.outcome, RunOutcome::kFailed);
  EXPECT_FALSE(found.campaign.HasOutput());
  EXPECT_FALSE(found.campaign.platform.files.FileExists("/out/long.csv"));
  EXPECT_EQ(found.Findings().size(), 1u);
  EXPECT_EQ(Found(kClean, {"compound ID"}, options).outcome, RunOutcome::kFinished);
}

TEST(Findings, AreNoneWhereACommaIsReadAsADecimalPoint) {
  Files files = kClean;
  files["a/P-1-2.xls"] = With(With(Plate(0), 1, 3, "-0,110"), 2, 3, "1.234,5");
  RunOptions options;
  options.decimal_comma = true;
  Found found(files, {"compound ID"}, options);
  EXPECT_THAT(found.Findings(),
              ElementsAre("not-a-number 1 | a/P-1-2.xls 5 compound ID=K2; Delta OD \"1.234,5\""));
  EXPECT_EQ(found.campaign.Output().Value(3, 4), CellValue::Number(-0.110));
  EXPECT_EQ(found.campaign.Output().Value(4, 4), CellValue::Text("1.234,5"));
}

TEST(Check, GoesThroughEverythingAndWritesNothing) {
  Files files = kClean;
  Rows twice = Plate(0);
  twice.push_back({5, "k1", 7, 0.5});
  files["a/P-1-1.xls"] = twice;
  files["a/P-1-3.xls"] = With(Plate(0), 0, 3, "OVRFLW");
  files["a/noreplication.xls"] = Plate(0);
  files["b/R-1-2.xls"] = Plate(4);    // the readings of Q-1-2 again
  files["b/S-1-200.xls"] = Plate(4);  // no letter for it, which is found in every row
  RunOptions options;
  options.check = true;
  Found found({});
  Campaign& campaign = found.campaign;
  for (const auto& [name, rows] : files) campaign.Put(name, rows);
  campaign.platform.files.AddFile(campaign.Path("b/notes.txt"), "no workbook");
  campaign.platform.files.AddFolder(campaign.Path("c"));
  campaign.platform.dialogs.texts.clear();
  EXPECT_EQ(found.run.Start({campaign.folder, {}}, options), RunOutcome::kFailed);
  const RunRecord& record = found.view.record;
  std::vector<std::string> problems;
  for (const Problem& problem : record.problems) {
    problems.push_back(problem.place.file + " " + std::to_string(problem.place.row) + " " +
                       problem.text.substr(0, 21));
  }
  EXPECT_THAT(
      problems,
      ElementsAre("a/noreplication.xls 0 Could not extract rep",
                  "a/P-1-1.xls 7 Duplicate key in file", "b/notes.txt 0 An error occurred whi",
                  "b/R-1-2.xls 3 The same key, with th", "b/R-1-2.xls 4 The same key, with th",
                  "b/R-1-2.xls 5 The same key, with th", "b/R-1-2.xls 6 The same key, with th",
                  "b/S-1-200.xls 3 An error occurred whi", "c 0 The sub-folder \"c\" is"));
  EXPECT_THAT(record.problems[1].cause, HasSubstr("row 4 of /.../screen/a/P-1-1.xls"));
  EXPECT_THAT(record.problems[4].cause, HasSubstr("row 4 of /.../screen/b/Q-1-2.xls"));
  EXPECT_THAT(found.Findings(),
              ElementsAre("not-a-number 1 | a/P-1-3.xls 3 compound ID=K0; Delta OD \"OVRFLW\""));
  EXPECT_FALSE(campaign.HasOutput());
  EXPECT_THAT(campaign.platform.dialogs.texts, IsEmpty());
  EXPECT_FALSE(campaign.platform.settings.Get("Main Section", "Last Path"));
  for (const char* name : {"a/noreplication.xls", "b/R-1-2.xls", "b/notes.txt", "b/S-1-200.xls"}) {
    campaign.platform.files.DeleteFile(campaign.Path(name));
  }
  campaign.Put("a/P-1-1.xls", Plate(0));
  campaign.Put("a/P-1-3.xls", Plate(0));
  campaign.Put("c/T-1-1.xls",
               With(With(With(With(Plate(0), 0, 1, "M0"), 1, 1, "M1"), 2, 1, "M2"), 3, 1, "M3"));
  EXPECT_EQ(found.run.Start({campaign.folder, {}}, options), RunOutcome::kFinished);
}

TEST(Check, GoesOnAfterRowsThatAreRefusedWhereTheirKeysAreFirstMet) {
  RunOptions options;
  options.check = true;
  options.keep_readings = true;
  // No replication 200 has a letter. K2 and K3 come again behind a key of their own file.
  const Found found(
      {{"a/A-1-200.xls", Plate(0)}, {"a/B-1-1.xls", With(With(Plate(2), 0, 1, "N0"), 3, 1, "K2")}},
      {"compound ID"}, options);
  EXPECT_EQ(found.outcome, RunOutcome::kFailed);
  EXPECT_EQ(found.view.record.problems.size(), 1u);
  EXPECT_THAT(found.Findings(), ElementsAre(HasSubstr("incomplete-replication")));
  const RunReadings& kept = *found.view.record.readings;
  std::vector<std::string> texts;
  for (const Reading& reading : kept.readings) {
    texts.push_back(kept.columns[0].Text(reading.key) + " of " + kept.keys[reading.key]);
  }
  EXPECT_THAT(texts, ElementsAre("N0 of compound ID=N0;", "K3 of compound ID=K3;",
                                 "L0 of compound ID=L0;", "K2 of compound ID=K2;"));
}

TEST(Check, CountsManyProblemsOfOneKind) {
  RunRecord record;
  for (int i = 0; i < 3000; ++i) {
    record.AddProblem({"Duplicate key in file \r\n'a'\r\nKey name: " + std::to_string(i),
                       {},
                       {"a", i, {}, {}, {}}});
    record.AddProblem({"Unreadable", "row " + std::to_string(i), {"a", i, {}, {}, {}}});
  }
  record.AddProblem({"Duplicate key in file ", {}, {"b", 1, {}, {}, {}}});
  EXPECT_EQ(record.problems.size(), 2 * (RunRecord::kMostAlike + 1) + 1);
  EXPECT_EQ(record.problems.at(40).text, "And 2,980 more in this file: Duplicate key in file ");
  EXPECT_EQ(record.problems.back().place.file, "b");
}

TEST(LongFormRun, IsRefusedWhereTheLongFormMustNotBeReplaced) {
  RunOptions options;
  options.wide = false;
  options.long_form = "/out/long.csv";
  Found found(kClean, {"compound ID"}, options);
  ASSERT_EQ(found.outcome, RunOutcome::kFinished);
  EXPECT_FALSE(found.campaign.HasOutput());
  EXPECT_THAT(found.campaign.platform.files.Content("/out/long.csv"),
              HasSubstr("K0,7,1,1,0.5,a/P-1-1.xls,3"));
  found.campaign.Set("Main Section", "Auto-Replace Output files", "0");
  found.campaign.platform.dialogs.plain_answers = {BoxAnswer::kCancel};
  EXPECT_EQ(found.run.Start({found.campaign.folder, {}}, options), RunOutcome::kFailed);
  EXPECT_THAT(found.campaign.platform.dialogs.plain.back().text, HasSubstr("long.csv\" exists"));
  found.campaign.Set("Main Section", "Auto-Replace Output files", "1");
  found.campaign.platform.files.Deny("/out/long.csv");
  EXPECT_EQ(found.run.Start({found.campaign.folder, {}}, options), RunOutcome::kFailed);
}

}  // namespace
}  // namespace korvex
