#include "engine/clsKorvex.h"

#include <optional>

#include "tests/engine/engine_test.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kExtraHeaders = "screen_num|row_num|vic_num|plate_384|well_384|plate_id";

class Engine : public EngineTest {
 protected:
  // The error number that the run ends with, 0 for a run that finishes.
  int Run(const std::vector<std::string>& names = {}) {
    std::vector<std::string> paths;
    for (const std::string& name : names) paths.push_back(campaign.Path(name));
    std::string folder = campaign.folder + "/";
    Forget();
    engine.emplace(view);
    return ErrorOf([&] { engine->ProcessFolders(folder, paths); }).Number();
  }
  // The cells of each row of the output, between bars, up to the last that is not empty.
  std::vector<std::string> Rows() {
    std::vector<std::string> rows;
    const int last = campaign.Output().LastCell().row;
    for (int row = 1; row <= last; ++row) rows.push_back(Join(campaign.OutputRow(row), "|"));
    return rows;
  }

  std::optional<clsKorvex> engine;
};

TEST_F(Engine, PutsTheReplicatesOfAKeySideBySide) {
  campaign.Put("a/P1-3-1.xls", {{1, "K1", 7, 0.25}, {2, "K2", 7, 0.5}});
  campaign.PutSheets("a/P1-3-2.xls", {{"chart", {}},
                                      {"data",
                                       {{"12/03/2002 10:15"},
                                        {"#", "compound ID", "plate", "Delta OD"},
                                        {1, "k2", 7, 1.5},
                                        {2, "K3", "0017", 1.25},
                                        {{}, "K4", 7, 0.2},  // a blank ends the rows
                                        {3, "K5", 7, 0.3}}}});
  Put("a/raw/P-1-1.xls");  // deeper than a sub-folder
  ASSERT_EQ(Run(), 0);
  EXPECT_EQ(campaign.Output().Name(), "screen");
  EXPECT_THAT(Rows(), ElementsAre("chem_id|plate|A|B|" + kExtraHeaders, "K1|7|0.25", "K2|7|0.5|1.5",
                                  "K3|0017||1.25"));
  EXPECT_THAT(view.calls,
              ElementsAre("Folder 1 of 1, Filename P1-3-1 (1 of 2), Sheet 1 of 1", "processed",
                          "Folder 1 of 1, Filename P1-3-2 (2 of 2), Sheet 2 of 2", "processed"));
  EXPECT_EQ(Told(), "");
  const std::string unseen = "Visible = False, ScreenUpdating = False, DisplayAlerts = False";
  const std::string read_only = " ReadOnly IgnoreReadOnlyRecommended AddToMru:=False, ";
  EXPECT_EQ(Join(campaign.spreadsheet.calls, ", "),
            "CreateApplication, CreateApplication, " + unseen +
                ", Open /data/screen/a/P1-3-1.xls, Quit, " + unseen +
                ", Add, Open /data/screen/a/P1-3-1.xls" + read_only +
                "Open /data/screen/a/P1-3-2.xls" + read_only + "Quit");
}

TEST_F(Engine, SuppliesDateFilenameAndDayNumber) {
  campaign.SetKeys({"date", "compound id"});
  campaign.SetOutputs({"FILENAME", "DATE", "Day_Num", "Compound ID"});
  Put("a/X-P1-3-2.xls");
  ASSERT_EQ(Run(), 0);
  // "B" is at 4 + 2; the empty column of "A" is closed.
  EXPECT_THAT(Rows(), ElementsAre("FILENAME|DATE|Day_Num|chem_id|B|" + kExtraHeaders,
                                  "/data/screen/a/X-P1-3-2.xls|12/03/2002|3|K1|0.1"));
  EXPECT_EQ(campaign.Output().Value(2, 3), CellValue::Number(3));
}

TEST_F(Engine, CopiesDataAsValuesAndOutputColumnsAsText) {
  campaign.SetOutputs({"plate"});
  const struct {
    TestCell data;
    TestCell as_text;
  } cases[] = {
      {CellValue::Date(37327.5), "3/12/2002 12:00:00 PM"},
      {CellValue::Boolean(true), "True"},
      {CellValue::ErrorCode(42), "Error 2042"},
      {1.0 / 3, 0.333333333333333},
      {"=A1", "=A1"},
      {1e15, 1e15},
      {"1E+15", "1E+15"},
      {1.0 / 12, 8.33333333333333e-02},
  };
  std::vector<std::vector<TestCell>> rows;
  for (const auto& c : cases) rows.push_back({1, static_cast<double>(rows.size()), c.data, c.data});
  campaign.Put("a/P-1-1.xls", rows);
  ASSERT_EQ(Run(), 0);
  const Worksheet& output = campaign.Output();
  int row = 1;
  for (const auto& c : cases) {
    EXPECT_EQ(output.Value(++row, 1), c.as_text.value) << row;
    EXPECT_EQ(output.Value(row, 2), c.data.value) << row;
  }
}

TEST_F(Engine, KeepsTheColumnsOfReplicationsFromBatchToBatch) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.Put("a/P-1-3.xls", {{1, "K1", 7, 0.3}});
  campaign.Put("b/P-1-3.xls", {{1, "K2", 7, 0.33}});
  campaign.Put("b/P-1-6.xls", {{1, "K2", 7, 0.66}});
  ASSERT_EQ(Run(), 0);
  // "C" was given column 5 and moved to 4 when the gap of "B" was closed; its later data still go
  // to 5. "F" takes the place, and the header, of an extra column.
  EXPECT_THAT(Rows(),
              ElementsAre("chem_id|plate|A|C|screen_num|row_num|vic_num|F|well_384|plate_id|" +
                              kExtraHeaders,
                          "K1|7|0.1|0.3", "K2|7|||0.33|||0.66"));
}

TEST_F(Engine, LeavesAnOutputColumnBlankThatALaterFileLacks) {
  campaign.SetOutputs({"plate", "compound ID"});
  Put("a/P-1-1.xls");
  campaign.PutSheets("a/P-1-2.xls", {{"data", {{"#", "compound ID", "Delta OD"}, {1, "K2", 0.2}}}});
  ASSERT_EQ(Run(), 0);
  EXPECT_THAT(Rows(), ElementsAre("plate|chem_id|A|B|" + kExtraHeaders, "7|K1|0.1", "|K2||0.2"));
}

// Other programs may change the settings and the folders during a run.
TEST_F(Engine, KeepsTheOutputAndTheFilesThatItBeganWith) {
  Put("a/P-1-1.xls");
  Put("a/P-1-2.xls");
  on_yield = [&] {
    campaign.Set("Main Section", "Output File", "precious.xls");
    files.AddFile(campaign.Path("a/P-1-3.xls"), "half of it");
  };
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Processed(), 2);
  EXPECT_EQ(engine->OutputFullName(), "/out/all.xls");
  EXPECT_TRUE(campaign.HasOutput());
}

// The sample campaign has more of them.
TEST_F(Engine, RefusesWhatItCannotReadOrWouldMixUp) {
  const auto put_sheet = [&](const char* name, const TestSheet& sheet) {
    campaign.PutSheets(name, {sheet});
  };
  const std::vector<std::vector<TestCell>> same_key = {{1, "K\n1", 7, 0.1}, {2, "k\n1", 7, 0.2}};
  const std::vector<std::vector<TestCell>> text_below = {{1, "K2", 7, 0.1}, {"mean", {}, {}, 0.1}};
  const auto add_column = [&] { campaign.SetOutputs({"compound ID", "#", "plate"}); };
  const TestSheet no_data = {"Sheet1", {}};
  const TestSheet day_alone = {"data", {{"12/03/2002"}, {"#", "plate", "Delta OD"}, {1}}};
  std::vector<std::string> headers = {"#", "Delta OD"};
  TestSheet wide = {"data", {{}, {1}}};
  for (int i = 1; i <= 100; ++i) headers.push_back("c" + std::to_string(i));
  for (const std::string& header : headers) wide.rows[0].emplace_back(header.c_str());
  const struct {
    std::string text;
    int processed;
    std::function<void()> prepare;
  } cases[] = {
      // Control characters of names and keys are shown as escapes.
      {"'/.../screen/b\\n/P\\x1B[2J-3-2.xls'\r\n\r\nKey name:   compound ID=k\\n1;", 1,
       [&] { campaign.Put("b\n/P\x1B[2J-3-2.xls", same_key); }},
      {"Key name:   compound ID=K1;\r\n\r\nReplications 1 and 33 share one column: their letters "
       "differ in case alone. Give the files numbers below 33.",
       1, [&] { Put("a/P-1-33.xls"); }},
      {"The data of replication 9 would be lost", 2,
       [&] {
         campaign.SetKeys({"Filename"});
         Put("a/P-1-9.xls");
         Put("b/Q-1-9.xls");
       }},
      {"replication number from file", 1, [&] { Put("a/P-3-0.xls"); }},
      {"replication number from file", 1, [&] { Put("a/P-3-40000.xls"); }},
      {"No \"data\" sheet found in file /.../screen/a/P-1-2.xls", 1,
       [&] { put_sheet("a/P-1-2.xls", no_data); }},
      {"no data column \"Delta OD\" in row 4, which counts as", 1,
       [&] { campaign.Put("a/P-1-2.xls", text_below); }},
      {"begun without a column for \"plate\"", 1,
       [&] {
         Put("a/P-1-2.xls");
         on_yield = add_column;
       }},
      {"Problem occurred while trying to extract the date from Column \"A1\".Please make sure "
       "date format is as required.\r\n\r\nFilename: /.../screen/a/P-1-1.xls",
       0,
       [&] {
         campaign.SetKeys({"Date"});
         campaign.SetOutputs({"plate"});
         put_sheet("a/P-1-1.xls", day_alone);
       }},
      {"the file /.../screen/a/Q-1.xls", 0,  // which has no day number
       [&] {
         campaign.SetKeys({"day_num"});
         files.Remove(campaign.Path("a"));
         Put("a/Q-1.xls");
       }},
      {"the file /.../screen/a/P-1-2.XLS", 1,
       [&] { files.AddFolder(campaign.Path("a/P-1-2.XLS")); }},
      {"/data/screen/io", 0,
       [&] {
         Put("io/P-1-2.xls");
         files.Fail(FileOperation::kList, campaign.Path("io"), error_number::kDeviceIo);
       }},
      {"There are 32,768 files in /data/screen/many, and a run takes at most 32,767. Spread them "
       "over several runs.",
       0,
       [&] {
         for (int i = 0; i < 32'768; ++i) files.AddFile(campaign.Path("many/" + std::to_string(i)));
       }},
      // Replication 176 has the column of 144, whose letter is the upper case of its own.
      {"There are 100 output columns and replications up to 157. The .xls format holds at most 256 "
       "columns a sheet; column 257 does not fit. Give the output a name that ends with .xlsx.",
       0,
       [&] {
         campaign.SetKeys({"c1"});
         campaign.SetOutputs({headers.begin() + 2, headers.end()});
         put_sheet("a/P-1-1.xls", wide);
         for (const char* name : {"a/P-1-144.xls", "a/P-1-176.xls", "b/P-1-157.xls"}) Put(name);
       }},
      // A share that goes away can leave its folder behind, empty.
      {"The sub-folder /data/screen/a has gone since the run was started.", 0,
       [&] { campaign.spreadsheet.on_quit = [&] { files.Remove(campaign.Path("a")); }; }},
      {"The sub-folder /data/screen/b has gone since the run was started.", 1,
       [&] {
         Put("b/P-1-2.xls");
         on_yield = [&] { files.Remove(campaign.Path("b")); };
       }},
      {"Disk full", 1, [&] { files.LimitSpace(1000); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    campaign.spreadsheet.on_quit = nullptr;
    on_yield = nullptr;
    files.Remove(campaign.folder);
    campaign.SetKeys({"compound ID"});
    campaign.SetOutputs({"compound ID", "plate"});
    Put("a/P-1-1.xls");
    c.prepare();
    EXPECT_EQ(Run(), 17);
    EXPECT_THAT(Told(), HasSubstr(c.text));
    EXPECT_EQ(Texts().size(), 1u);
    EXPECT_EQ(Processed(), c.processed);
    EXPECT_FALSE(campaign.HasOutput());
    engine.reset();
    EXPECT_EQ(campaign.spreadsheet.running, 0);
  }
}

TEST_F(Engine, ProcessesSelectedFilesAsOneBatch) {
  campaign.ProcessSelectedFiles();
  Put("P-1-2.xls", 0.2);
  Put("P-1-1.xls");
  ASSERT_EQ(Run({"P-1-2.xls", "P-1-1.xls"}), 0);
  EXPECT_EQ(Rows().at(1), "K1|7|0.1|0.2");
  EXPECT_EQ(view.calls.front(), "Folder 1 of 1, Filename P-1-2 (1 of 2), Sheet 1 of 1");
  EXPECT_EQ(Run({"P-1-1.xls", "none.xls"}), 17);
  EXPECT_EQ(view.calls.back(), "Error while processing file /.../data/screen/none.xls");
}

// 2 output columns and 6 for every sub-folder: 42 fill 254 of 256, and leave room for 2
// replications.
TEST_F(Engine, SaysBeforehandThatSubFoldersWillNotFit) {
  campaign.SetKeys({"Filename"});
  for (int folder = 10; folder < 52; ++folder) Put(std::to_string(folder) + "/P-1-1.xls");
  Put("10/P-1-2.xls");
  EXPECT_EQ(Run(), 0);
  for (const char* name : {"10/P-1-3.xls", "52/P-1-1.xls"}) {
    Put(name);
    EXPECT_EQ(Run(), 17);
    EXPECT_EQ(Processed(), 0);
    EXPECT_THAT(Told(), HasSubstr("a name that ends with .xlsx"));
  }
  campaign.Set("Main Section", "Output File", "all.xlsx");
  EXPECT_EQ(Run(), 0);
}

TEST_F(Engine, StopsBeforeTheNextFileIsReadOnceThatIsConfirmed) {
  Put("a/P-1-1.xls");
  Put("a/P-1-2.xls");
  on_yield = [&] {
    if (Processed() == 1) engine->StopProcess();
  };
  EXPECT_EQ(Run(), 17);
  EXPECT_EQ(Processed(), 1);
  EXPECT_TRUE(engine->Stopped());
  EXPECT_FALSE(engine->Running());
  EXPECT_THAT(Told(), StartsWith("Stop Process?; "));
  EXPECT_THAT(Told(), HasSubstr("\"frmMain.ProcessFolders\"."));
  EXPECT_THAT(Told(), EndsWith("You stopped the run; no output was written."));
  EXPECT_EQ(view.calls.back(), "Error while processing folder /.../screen/a");
  EXPECT_FALSE(campaign.HasOutput());

  campaign.platform.dialogs.button_answers = {"Continue"};
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Processed(), 2);
  EXPECT_FALSE(engine->Stopped());
  EXPECT_EQ(Told(), "Stop Process?");
}

}  // namespace
}  // namespace korvex
