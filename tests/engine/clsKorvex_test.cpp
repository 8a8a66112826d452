#include "engine/clsKorvex.h"

#include <gmock/gmock.h>

#include <optional>

#include "tests/support/campaign.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct RecordedEvents : KorvexEvents {
  void ErrorMessage(const std::string& text) override { errors.push_back(text); }
  void Message(const std::string& text) override { messages.push_back(text); }
  void ProcessedFile() override { ++processed; }

  std::vector<std::string> errors;
  std::vector<std::string> messages;
  int processed = 0;
};

class Engine : public testing::Test {
 protected:
  // The error number that the run ends with, 0 for a run that finishes.
  int Run(const std::vector<std::string>& names = {}) {
    std::vector<std::string> files;
    for (const std::string& name : names) files.push_back(campaign.Path(name));
    std::string folder = campaign.folder + "/";
    campaign.platform.dialogs.texts.clear();
    engine.emplace(events);
    return ErrorOf([&] { engine->ProcessFolders(folder, files); }).Number();
  }
  const std::vector<std::string>& Texts() const { return campaign.platform.dialogs.texts; }
  const std::string& Cause() const { return campaign.platform.dialogs.plain.back().cause; }

  Campaign campaign;
  RecordedEvents events;
  std::optional<clsKorvex> engine;
};

TEST_F(Engine, PutsTheReplicatesOfAKeySideBySide) {
  campaign.Put("a/P1-3-1.xls", {{1, "K1", 7, 0.25}, {2, "K2", 7, 0.5}});
  campaign.Put("a/P1-3-2.xls", {{1, "k2", 7, 1.5}, {2, "K3", "0017", 1.25}});
  campaign.Put("a/raw/P-1-1.xls", {{1, "K1", 7, 0.2}});  // deeper than a sub-folder
  ASSERT_EQ(Run(), 0);
  EXPECT_EQ(campaign.Output().Name(), "screen");
  EXPECT_THAT(campaign.OutputRow(1),
              ElementsAre("chem_id", "plate", "A", "B", "screen_num", "row_num", "vic_num",
                          "plate_384", "well_384", "plate_id"));
  EXPECT_THAT(campaign.OutputRow(2), ElementsAre("K1", "7", "0.25"));
  EXPECT_THAT(campaign.OutputRow(3), ElementsAre("K2", "7", "0.5", "1.5"));
  EXPECT_THAT(campaign.OutputRow(4), ElementsAre("K3", "0017", "", "1.25"));
  EXPECT_THAT(campaign.OutputRow(5), IsEmpty());
  EXPECT_EQ(events.processed, 2);
  EXPECT_THAT(events.messages,
              ElementsAre("Folder 1 of 1, Filename P1-3-1 (1 of 2), Sheet 1 of 1",
                          "Folder 1 of 1, Filename P1-3-2 (2 of 2), Sheet 1 of 1"));
  EXPECT_FALSE(engine->Running());
  EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(Engine, DrivesTheApplicationInOrder) {
  campaign.Put("a/P1-3-1.xls", {});
  ASSERT_EQ(Run(), 0);
  EXPECT_THAT(campaign.spreadsheet.calls,
              ElementsAre("CreateApplication", "CreateApplication", "Visible = False",
                          "ScreenUpdating = False", "DisplayAlerts = False",
                          "Open /data/screen/a/P1-3-1.xls", "Quit", "Visible = False",
                          "ScreenUpdating = False", "DisplayAlerts = False", "Add",
                          "Open /data/screen/a/P1-3-1.xls ReadOnly IgnoreReadOnlyRecommended "
                          "AddToMru:=False",
                          "Quit"));
}

TEST_F(Engine, SuppliesDateFilenameAndDayNumber) {
  campaign.SetKeys({"date", "compound id"});
  campaign.SetOutputs({"FILENAME", "DATE", "Day_Num", "Compound ID"});
  campaign.Put("a/X-P1-3-2.xls", {{1, "K1", 7, 0.25}});
  ASSERT_EQ(Run(), 0);
  EXPECT_THAT(campaign.OutputRow(2),
              ElementsAre("/data/screen/a/X-P1-3-2.xls", "12/03/2002", "3", "K1", "0.25"));
  EXPECT_EQ(campaign.Output().Value(2, 3), CellValue::Number(3));
  // "B" is at 4 + 2; the empty column of "A" is closed.
  EXPECT_EQ(campaign.OutputRow(1).at(4), "B");
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
      {" =A1", " =A1"},
  };
  std::vector<std::vector<TestCell>> rows;
  const char* const keys[] = {"A", "B", "C", "D", "E", "F", "G", "H", "I"};
  for (const auto& c : cases) rows.push_back({1, keys[rows.size()], c.data, c.data});
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
  EXPECT_THAT(campaign.OutputRow(1),
              ElementsAre("chem_id", "plate", "A", "C", "screen_num", "row_num", "vic_num", "F",
                          "well_384", "plate_id", "screen_num", "row_num", "vic_num", "plate_384",
                          "well_384", "plate_id"));
  EXPECT_THAT(campaign.OutputRow(2), ElementsAre("K1", "7", "0.1", "0.3"));
  EXPECT_THAT(campaign.OutputRow(3), ElementsAre("K2", "7", "", "", "0.33", "", "", "0.66"));
}

TEST_F(Engine, RefusesDataWhoseColumnHasLostItsHeader) {
  campaign.SetKeys({"Filename"});
  for (const char* name : {"a/P-1-1.xls", "a/P-1-9.xls", "b/Q-1-9.xls"}) {
    campaign.Put(name, {{1, "K1", 7, 0.1}});
  }
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts(), ElementsAre(HasSubstr("The data of replication 9 would be lost")));
}

TEST_F(Engine, LeavesAnOutputColumnBlankThatALaterFileLacks) {
  campaign.SetOutputs({"plate", "compound ID"});
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.PutSheets("a/P-1-2.xls", {{"data", {{"#", "compound ID", "Delta OD"}, {1, "K2", 0.2}}}});
  ASSERT_EQ(Run(), 0);
  EXPECT_THAT(campaign.OutputRow(1),
              ElementsAre("plate", "chem_id", "A", "B", "screen_num", "row_num", "vic_num",
                          "plate_384", "well_384", "plate_id"));
  EXPECT_THAT(campaign.OutputRow(2), ElementsAre("7", "K1", "0.1"));
  EXPECT_THAT(campaign.OutputRow(3), ElementsAre("", "K2", "", "0.2"));
}

// Other programs may change the settings and the folders during a run.
TEST_F(Engine, KeepsTheOutputAndTheFilesThatItBeganWith) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.Put("a/P-1-2.xls", {{1, "K1", 7, 0.2}});
  std::function<void()> change;
  campaign.platform.message_loop.on_yield = [&] { change(); };
  change = [&] {
    campaign.Set("Main Section", "Output File", "precious.xls");
    campaign.platform.files.AddFile(campaign.Path("a/P-1-3.xls"), "half of it");
  };
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(events.processed, 2);
  campaign.platform.files.DeleteFile(campaign.Path("a/P-1-3.xls"));
  EXPECT_EQ(engine->OutputFullName(), "/out/all.xls");
  EXPECT_TRUE(campaign.HasOutput());
  change = [&] { campaign.SetOutputs({"compound ID", "#", "plate"}); };
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Cause(), HasSubstr("begun without a column for \"plate\""));
}

TEST_F(Engine, EndsASheetAtABlankAndFindsTheHeaderFromBelow) {
  const auto put = [&](const TestCell& blank) {
    campaign.PutSheets("a/P-1-1.xls", {{"chart", {}},
                                       {"data",
                                        {{"12/03/2002 10:15"},
                                         {"#", "compound ID", "plate", "Delta OD"},
                                         {1, "K1", 7, 0.1},
                                         {blank, "K2", 7, 0.2},
                                         {3, "K3", 7, 0.3}}}});
  };
  put({});
  ASSERT_EQ(Run(), 0);
  EXPECT_THAT(campaign.OutputRow(2), ElementsAre("K1", "7", "0.1"));
  EXPECT_THAT(campaign.OutputRow(3), IsEmpty());
  // A row whose first cell is no number is the header row for the search from below: here there is
  // none but a blank text, so that no column is available and the run is refused.
  put("  ");
  EXPECT_EQ(Run(), 17);
}

// The sample campaign has more of them.
TEST_F(Engine, RefusesWhatItCannotReadOrWouldMixUp) {
  const auto put = [&](const char* name) { campaign.Put(name, {{1, "K1", 7, 0.1}}); };
  const std::string replication =
      "Could not extract replication number from file. Please make sure filenames are in format "
      "\"<XXX>-<X>-<REPLICATION-NUM>.xls\".\r\n\r\nFilename: /.../screen/a/";
  const struct {
    const char* condition;
    std::function<void()> prepare;
    std::string text;
  } cases[] = {
      {"a key twice in a sheet",
       [&] {
         campaign.Put("a/P1-3-2.xls", {{1, "K1", 7, 0.1}, {2, "k1", 7, 0.2}});
       },
       "Duplicate key in file \r\n'/.../screen/a/P1-3-2.xls'\r\n\r\nKey name:   compound ID=k1;"},
      {"a key that replications of one letter share", [&] { put("a/P1-3-33.xls"); },
       "Key name:   compound ID=K1;\r\n\r\nReplications 1 and 33 share one column: their letters "
       "differ in case alone. Give the files numbers below 33."},
      {"control characters in a key and in the names of file and folder",
       [&] {
         campaign.Put("a\n/P1\x1B[2J-3-2.xls", {{1, "K\n1", 7, 0.1}, {2, "k\n1", 7, 0.2}});
       },
       "'/.../screen/a\\n/P1\\x1B[2J-3-2.xls'\r\n\r\nKey name:   compound ID=k\\n1;"},
      {"replication 0", [&] { put("a/P1-3-0.xls"); }, replication + "P1-3-0.xls"},
      {"replication of 17 bits", [&] { put("a/P1-3-40000.xls"); }, replication + "P1-3-40000.xls"},
      {"no sheet data",
       [&] {
         campaign.PutSheets("a/P1-3-2.xls", {{"Sheet1", {}}});
       },
       "No \"data\" sheet found in file /.../screen/a/P1-3-2.xls"},
      {"a text below the data, which passes for the header row",
       [&] {
         campaign.Put("a/P1-3-2.xls", {{1, "K2", 7, 0.1}, {"mean", {}, {}, 0.1}});
       },
       "An error occurred while processing the file /.../screen/a/P1-3-2.xls"},
      {"no date",
       [&] {
         campaign.SetKeys({"compound ID", "Date"});
         campaign.PutSheets(
             "a/P1-3-1.xls",
             {{"data",
               {{"12/03/2002"}, {"#", "compound ID", "plate", "Delta OD"}, {1, "K1", 7, 0.1}}}});
       },
       "Problem occurred while trying to extract the date from Column \"A1\".Please make sure "
       "date format is as required.\r\n\r\nFilename: /.../screen/a/P1-3-1.xls"},
      {"no day number",
       [&] {
         campaign.platform.files.Remove(campaign.Path("a"));
         campaign.SetKeys({"compound ID", "day_num"});
         put("a/P1-1.xls");
       },
       "An error occurred while processing the file /.../screen/a/P1-1.xls"},
      {"a folder named like a workbook",
       [&] { campaign.platform.files.AddFolder(campaign.Path("a/P1-3-2.XLS")); },
       "An error occurred while processing the file /.../screen/a/P1-3-2.XLS"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.condition);
    campaign.platform.files.Remove(campaign.folder);
    campaign.SetKeys({"compound ID"});
    put("a/P1-3-1.xls");
    c.prepare();
    EXPECT_EQ(Run(), 17);
    EXPECT_THAT(Texts(), ElementsAre(HasSubstr(c.text)));
    if (std::string_view(c.condition).starts_with("a text below")) {
      EXPECT_THAT(Cause(), HasSubstr("no data column \"Delta OD\" in row 4, which counts as"));
    }
    EXPECT_FALSE(campaign.HasOutput());
    engine.reset();
    EXPECT_EQ(campaign.spreadsheet.running, 0);
  }
  EXPECT_THAT(events.errors, testing::Contains("Error while processing folder /.../screen/a"));
}

TEST_F(Engine, ProcessesSelectedFilesAsOneBatch) {
  campaign.ProcessSelectedFiles();
  campaign.Put("P-1-2.xls", {{1, "K1", 7, 0.2}});
  campaign.Put("P-1-1.xls", {{1, "K1", 7, 0.1}});
  ASSERT_EQ(Run({"P-1-2.xls", "P-1-1.xls"}), 0);
  EXPECT_THAT(campaign.OutputRow(2), ElementsAre("K1", "7", "0.1", "0.2"));
  EXPECT_EQ(events.messages.front(), "Folder 1 of 1, Filename P-1-2 (1 of 2), Sheet 1 of 1");

  EXPECT_EQ(Run({"P-1-1.xls", "none.xls"}), 17);
  EXPECT_THAT(events.errors, ElementsAre("Error while processing file /.../data/screen/none.xls"));
}

// 2 output columns and 6 for every sub-folder: 42 fill 254 of 256, and leave room for 2
// replications.
TEST_F(Engine, SaysBeforehandThatSubFoldersWillNotFit) {
  for (int folder = 10; folder < 52; ++folder) {
    campaign.Put(std::to_string(folder) + "/P-1-1.xls", {{1, "K1", 7, 0.1}});
    campaign.SetKeys({"Filename"});
  }
  campaign.Put("10/P-1-2.xls", {{1, "K1", 7, 0.1}});
  EXPECT_EQ(Run(), 0);
  for (const char* name : {"10/P-1-3.xls", "52/P-1-1.xls"}) {
    events.processed = 0;
    campaign.Put(name, {{1, "K1", 7, 0.1}});
    EXPECT_EQ(Run(), 17);
    EXPECT_EQ(events.processed, 0);
    EXPECT_THAT(Texts(), ElementsAre(HasSubstr("a name that ends with .xlsx")));
  }
  campaign.Set("Main Section", "Output File", "all.xlsx");
  EXPECT_EQ(Run(), 0);
}

TEST_F(Engine, SaysBeforehandThatReplicationsWillNotFit) {
  TestSheet sheet{"data", {{"#"}, {1}}};
  std::vector<std::string> outputs(100, "c");
  for (std::string& name : outputs) {
    name += std::to_string(sheet.rows[0].size());
    sheet.rows[0].emplace_back(name.c_str());
  }
  sheet.rows[0].emplace_back("Delta OD");
  campaign.SetKeys({"c1"});
  campaign.SetOutputs(outputs);
  // Replication 176 shares the column of replication 144, whose letter is the upper case of its
  // own.
  for (const char* name : {"a/P-1-144.xls", "a/P-1-176.xls", "b/P-1-157.xls"}) {
    campaign.PutSheets(name, {sheet});
  }
  EXPECT_EQ(Run(), 17);
  EXPECT_EQ(events.processed, 0);
  EXPECT_THAT(Texts(), ElementsAre("There are 100 output columns and replications up to 157. The "
                                   ".xls format holds at most 256 columns a sheet; column 257 does "
                                   "not fit. Give the output a name that ends with .xlsx."));
}

// Without a sample no column is available, so that the row of headers is empty.
TEST_F(Engine, SavesAWorkbookForAFolderWithoutSubFolders) {
  ASSERT_EQ(Run(), 0);
  EXPECT_THAT(campaign.OutputRow(1), IsEmpty());
  EXPECT_THAT(Texts(), ElementsAre("No file could be used in order to determine structure of file. "
                                   "Please make sure you have "
                                   "files in all sub-folders of chosen processing folder."));
}

TEST_F(Engine, StopsBeforeTheNextFileIsReadOnceThatIsConfirmed) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.Put("a/P-1-2.xls", {{1, "K1", 7, 0.2}});
  campaign.platform.message_loop.on_yield = [&] {
    if (events.processed == 1) engine->StopProcess();
  };
  EXPECT_EQ(Run(), 17);
  EXPECT_EQ(events.processed, 1);
  EXPECT_TRUE(engine->Stopped());
  EXPECT_FALSE(engine->Running());
  EXPECT_THAT(Texts(), ElementsAre("Stop Process?", HasSubstr("\"frmMain.ProcessFolders\".")));
  EXPECT_EQ(Cause(), "User interrupt occurred");
  EXPECT_FALSE(campaign.HasOutput());

  events.processed = 0;
  campaign.platform.dialogs.button_answers = {"Continue"};
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(events.processed, 2);
  EXPECT_FALSE(engine->Stopped());
  EXPECT_THAT(Texts(), ElementsAre("Stop Process?"));
}

TEST_F(Engine, KeepsAFileThatAppearsDuringTheRunAndItsOwnOutput) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.platform.files.AddFile("/out/all (2).xls", "older");
  campaign.platform.message_loop.on_yield = [&] {
    campaign.platform.files.AddFile("/out/all.xls", "precious");
    engine->KeepExistingOutput();
  };
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Cause(), HasSubstr("/out/all.xls appeared during the run and was not replaced"));
  EXPECT_THAT(Cause(), HasSubstr("The output of the run is in /out/all (3).xls."));
  EXPECT_EQ(campaign.platform.files.Content("/out/all.xls"), "precious");
  EXPECT_GT(campaign.platform.files.Content("/out/all (3).xls").size(), 1000u);
}

TEST_F(Engine, SavesNothingWhenItCannotGoOn) {
  MemoryFileSystem& files = campaign.platform.files;
  const auto put = [&](const char* name) { campaign.Put(name, {{1, "K1", 7, 0.1}}); };
  const struct {
    const char* cause;
    std::function<void()> prepare;
    int processed;
  } cases[] = {
      {"/data/screen/io",
       [&] {
         put("io/P-1-2.xls");
         files.Fail(FileOperation::kList, campaign.Path("io"), error_number::kDeviceIo);
       },
       0},
      {"There are 32,768 files in /data/screen/many, and a run takes at most 32,767. Spread them "
       "over several runs.",
       [&] {
         for (int i = 0; i < 32'768; ++i) files.AddFile(campaign.Path("many/" + std::to_string(i)));
       },
       0},
      // A share that goes away can leave its folder behind, empty.
      {"The sub-folder /data/screen/a has gone since the run was started.",
       [&] { campaign.spreadsheet.on_quit = [&] { files.Remove(campaign.Path("a")); }; }, 0},
      {"The sub-folder /data/screen/b has gone since the run was started.",
       [&] {
         put("b/P-1-2.xls");
         campaign.platform.message_loop.on_yield = [&] { files.Remove(campaign.Path("b")); };
       },
       1},
      {"Disk full", [&] { files.LimitSpace(1000); }, 1},
  };
  for (const auto& c : cases) {
    engine.reset();
    campaign.spreadsheet.on_quit = nullptr;
    campaign.platform.message_loop.on_yield = nullptr;
    files.Remove(campaign.folder);
    put("a/P-1-1.xls");
    c.prepare();
    events.processed = 0;
    EXPECT_EQ(Run(), 17);
    EXPECT_THAT(Texts(), ElementsAre(HasSubstr("\"frmMain.ProcessFolders\".")));
    EXPECT_THAT(Cause(), HasSubstr(c.cause));
    EXPECT_EQ(events.processed, c.processed) << c.cause;
    EXPECT_FALSE(campaign.HasOutput());
  }
}

}  // namespace
}  // namespace korvex
