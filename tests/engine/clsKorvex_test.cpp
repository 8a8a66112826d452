#include "engine/clsKorvex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
    std::string folder = campaign.folder;
    engine.emplace(events);
    return ErrorOf([&] { engine->ProcessFolders(folder, files); }).Number();
  }
  const std::vector<std::string>& Texts() const { return campaign.platform.dialogs.texts; }
  bool Saved() const { return !campaign.spreadsheet.saved.empty(); }

  Campaign campaign;
  RecordedEvents events;
  std::optional<clsKorvex> engine;
};

TEST_F(Engine, PutsTheReplicatesOfAKeySideBySide) {
  campaign.Put("a/P1-3-1.xls", {{1, "K1", 7, 0.25}, {2, "K2", 7, 0.5}});
  campaign.Put("a/P1-3-2.xls", {{1, "k2", 7, 1.5}, {2, "K3", "0017", 1.25}});
  ASSERT_EQ(Run(), 0);
  const FakeSheet& output = campaign.Output();
  EXPECT_EQ(output.name, "screen");
  EXPECT_THAT(output.Headers(), ElementsAre("chem_id", "plate", "A", "B", "screen_num", "row_num",
                                            "vic_num", "plate_384", "well_384", "plate_id"));
  const std::vector<FakeSheet::Row> expected = {
      {"K1", 7, 0.25, {}}, {"K2", 7, 0.5, 1.5}, {"K3", "0017", {}, 1.25}};
  for (int row = 2; row <= 5; ++row) {
    for (int column = 1; column <= 4; ++column) {
      const FakeCell cell =
          row == 5
              ? FakeCell()
              : expected[static_cast<std::size_t>(row - 2)][static_cast<std::size_t>(column - 1)];
      EXPECT_EQ(output.At(row, column), cell) << row << ", " << column;
    }
  }
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
  EXPECT_THAT(
      campaign.spreadsheet.calls,
      ElementsAre("CreateApplication", "CreateApplication", "Visible = False",
                  "ScreenUpdating = False", "DisplayAlerts = False",
                  "Workbooks.Open /data/screen/a/P1-3-1.xls", "Close P1-3-1.xls", "Quit",
                  "Visible = False", "ScreenUpdating = False", "DisplayAlerts = False",
                  "Workbooks.Add", "Delete Sheet1", "Delete Sheet2",
                  "Workbooks.Open /data/screen/a/P1-3-1.xls ReadOnly IgnoreReadOnlyRecommended "
                  "AddToMru:=False",
                  "Activate data", "Activate data", "Close P1-3-1.xls", "SaveAs /out/all.xls",
                  "Close Book1", "Quit"));
}

TEST_F(Engine, NamesTheSheetAfterAFolderGivenWithASeparator) {
  campaign.Put("a/P-1-1.xls", {});
  std::string folder = campaign.folder + "/";
  ASSERT_EQ(ErrorOf([&] { clsKorvex(events).ProcessFolders(folder, {}); }).Number(), 0);
  EXPECT_EQ(campaign.Output().name, "screen");
}

TEST_F(Engine, SuppliesDateFilenameAndDayNumber) {
  campaign.SetKeys({"date", "compound id"});
  campaign.SetOutputs({"FILENAME", "DATE", "Day_Num", "Compound ID"});
  campaign.Put("a/X-P1-3-2.xls", {{1, "K1", 7, 0.25}});
  ASSERT_EQ(Run(), 0);
  const FakeSheet& output = campaign.Output();
  EXPECT_EQ(output.At(1, 4), FakeCell("chem_id"));
  EXPECT_EQ(output.At(2, 1), FakeCell("/data/screen/a/X-P1-3-2.xls"));
  EXPECT_EQ(output.At(2, 2), FakeCell("12/03/2002"));
  EXPECT_EQ(output.At(2, 3), FakeCell(3));
  EXPECT_EQ(output.At(1, 5), FakeCell("B"));  // at 4 + 2; the empty column of "A" is closed
}

TEST_F(Engine, CopiesDataAsValuesAndOutputColumnsAsText) {
  campaign.SetOutputs({"plate"});
  const FakeCell date = FakeCell::Of(CellValue::Date(37327.5));
  const FakeCell yes = FakeCell::Of(CellValue::Boolean(true));
  const FakeCell not_available = FakeCell::Of(CellValue::ErrorCode(42));
  campaign.Put("a/P-1-1.xls", {{1, "A", date, date},
                               {1, "B", yes, yes},
                               {1, "C", not_available, not_available},
                               {1, "D", 1.0 / 3, 1.0 / 3},
                               {1, "E", "=A1", " =A1"},
                               {1, "F", "", ""},
                               {1, "G", 1e15, "12"}});
  ASSERT_EQ(Run(), 0);
  const std::vector<FakeCell> as_text = {
      "3/12/2002 12:00:00 PM", "True", "Error 2042", 0.333333333333333, "=A1", {}, "1E+15"};
  const std::vector<FakeCell> as_value = {date, yes, not_available, 1.0 / 3, " =A1", "", "12"};
  for (std::size_t i = 0; i < as_text.size(); ++i) {
    EXPECT_EQ(campaign.Output().At(static_cast<int>(i) + 2, 1), as_text[i]) << i;
    EXPECT_EQ(campaign.Output().At(static_cast<int>(i) + 2, 2), as_value[i]) << i;
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
  EXPECT_THAT(campaign.Output().Headers(),
              ElementsAre("chem_id", "plate", "A", "C", "screen_num", "row_num", "vic_num", "F",
                          "well_384", "plate_id", "screen_num", "row_num", "vic_num", "plate_384",
                          "well_384", "plate_id"));
  EXPECT_EQ(campaign.Output().At(2, 4), FakeCell(0.3));
  EXPECT_EQ(campaign.Output().At(3, 5), FakeCell(0.33));
  EXPECT_EQ(campaign.Output().At(3, 8), FakeCell(0.66));
}

TEST_F(Engine, EndsASheetAtABlankAndFindsTheHeaderFromBelow) {
  campaign.PutContent("a/P-1-1.xls", {{FakeSheet("chart", {}),
                                       FakeSheet("data", {{"12/03/2002 10:15"},
                                                          {"#", "compound ID", "plate", "Delta OD"},
                                                          {1, "K1", 7, 0.1},
                                                          {"  ", "K2", 7, 0.2},
                                                          {3, "K3", 7, 0.3}})}});
  // A row whose first cell is no number is the header row for the search from below: here there is
  // none but a blank text, so that no column is available and the run is refused.
  EXPECT_EQ(Run(), 17);

  campaign.PutContent("a/P-1-1.xls", {{FakeSheet("data", {{"12/03/2002 10:15"},
                                                          {"#", "compound ID", "plate", "Delta OD"},
                                                          {1, "K1", 7, 0.1},
                                                          {{}, "K2", 7, 0.2},
                                                          {3, "K3", 7, 0.3}})}});
  ASSERT_EQ(Run(), 0);
  EXPECT_EQ(campaign.Output().At(2, 1), FakeCell("K1"));
  EXPECT_EQ(campaign.Output().At(3, 1), FakeCell());
}

struct Refusal {
  const char* file_name;
  std::initializer_list<FakeSheet::Row> rows;
  std::string text;
};

TEST_F(Engine, RefusesWhatWouldMixUpData) {
  const Refusal refusals[] = {
      {"P1-3-2.xls",
       {{1, "K1", 7, 0.1}, {2, "k1", 7, 0.2}},
       "Duplicate key in file \r\n'/.../screen/a/P1-3-2.xls'\r\n\r\nKey name:   compound ID=k1;"},
      {"Q1-3-1.xls",
       {{1, "K1", 7, 0.1}},
       "The same key, with the same replication number was found in different files, and data "
       "would be overwritten. Please check that all key fields are truely unique.\r\n\r\n"
       "Current file: /.../screen/a/Q1-3-1.xls\r\n\r\nKey name:   compound ID=K1;"},
      {"P1-3-x.xls",
       {},
       "Could not extract replication number from file. Please make sure filenames are in format "
       "\"<XXX>-<X>-<REPLICATION-NUM>.xls\".\r\n\r\nFilename: /.../screen/a/P1-3-x.xls"},
      {"P1-3-40000.xls", {}, "Could not extract replication number from file. "},
      {"P1-3-0.xls", {}, "Could not extract replication number from file. "}};
  for (const Refusal& refusal : refusals) {
    campaign.platform.files.Remove("/data/screen");
    campaign.Put("a/P1-3-1.xls", {{1, "K1", 7, 0.1}});
    campaign.Put(std::string("a/") + refusal.file_name, refusal.rows);
    campaign.platform.dialogs.texts.clear();
    EXPECT_EQ(Run(), 17) << refusal.file_name;
    EXPECT_THAT(Texts(), ElementsAre(HasSubstr(refusal.text)));
    EXPECT_EQ(campaign.spreadsheet.calls.back(), "Close " + std::string(refusal.file_name));
    EXPECT_FALSE(Saved());
  }
  EXPECT_THAT(events.errors, testing::Each("Error while processing folder /.../screen/a"));
}

TEST_F(Engine, RefusesAFileNameOrDateThatItNeedsAndCannotRead) {
  campaign.SetKeys({"compound ID", "day_num"});
  campaign.Put("a/P1-2.xls", {{1, "K1", 7, 0.1}});
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts(),
              ElementsAre("An error occurred while processing the file /.../screen/a/P1-2.xls"));
  EXPECT_THAT(campaign.platform.dialogs.plain.back().cause, HasSubstr("\"P1\""));
  EXPECT_EQ(campaign.spreadsheet.workbooks_open, 2);  // until the engine goes

  campaign.SetKeys({"compound ID", "Date"});
  FakeSheet sheet("data",
                  {{"12/03/2002"}, {"#", "compound ID", "plate", "Delta OD"}, {1, "K1", 7, 0.1}});
  campaign.PutContent("a/P1-2.xls", {{sheet}});
  campaign.platform.dialogs.texts.clear();
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts(), ElementsAre("Problem occurred while trying to extract the date from Column "
                                   "\"A1\".Please make sure date format is as required.\r\n\r\n"
                                   "Filename: /.../screen/a/P1-2.xls"));
  EXPECT_EQ(campaign.spreadsheet.workbooks_open, 1);  // the input workbook was closed at once
}

TEST_F(Engine, RefusesAFileWithoutASheetData) {
  campaign.Put("a/P-1-1.xls", {});
  campaign.PutContent("a/P-1-2.xls", {{FakeSheet("Sheet1", {})}});
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts(), ElementsAre("No \"data\" sheet found in file /.../screen/a/P-1-2.xls"));
  EXPECT_FALSE(Saved());
}

TEST_F(Engine, RefusesASampleThatDisagreesWithTheSettings) {
  campaign.Put("a/P-1-1.xls", {});
  campaign.SetOutputs({"Batch"});
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts(), ElementsAre("Please check structure settings before start.\r\n\r\n"
                                   "File used for format check:\r\n\r\n"
                                   "/.../screen/a/P-1-1.xls"));
  EXPECT_THAT(campaign.spreadsheet.calls, Not(testing::Contains("Workbooks.Add")));
}

TEST_F(Engine, RefusesAnEmptySubFolderEvenAfterOthers) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.platform.files.AddFolder("/data/screen/b");
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts(),
              ElementsAre("The sub-folder \"b\" is empty. Please make sure all sub-folders of "
                          "chosen processing folder have files in them."));
  EXPECT_EQ(events.processed, 1);
  EXPECT_FALSE(Saved());
}

TEST_F(Engine, ReportsAFileThatCannotBeRead) {
  campaign.Put("a/P-1-1.xls", {});
  campaign.platform.files.AddFile("/data/screen/a/notes.txt");
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts().back(),
              "An error occurred while processing the file "
              "/.../screen/a/notes.txt");
  EXPECT_EQ(campaign.platform.dialogs.plain.back().cause,
            "/data/screen/a/notes.txt cannot be opened.");
  EXPECT_THAT(events.errors, ElementsAre("Error while processing folder /.../screen/a"));
}

TEST_F(Engine, RefusesAFolderNamedLikeAWorkbookAndPassesOthersOver) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.Put("a/raw/P-1-1.xls", {{1, "K1", 7, 0.2}});
  EXPECT_EQ(Run(), 0);
  campaign.platform.files.AddFolder("/data/screen/a/P-1-2.XLS");
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts().back(),
              "An error occurred while processing the file "
              "/.../screen/a/P-1-2.XLS");
}

TEST_F(Engine, ProcessesSelectedFilesAsOneBatch) {
  campaign.ProcessSelectedFiles();
  campaign.Put("P-1-2.xls", {{1, "K1", 7, 0.2}});
  campaign.Put("P-1-1.xls", {{1, "K1", 7, 0.1}});
  ASSERT_EQ(Run({"P-1-2.xls", "P-1-1.xls"}), 0);
  EXPECT_EQ(campaign.Output().At(2, 3), FakeCell(0.1));
  EXPECT_EQ(campaign.Output().At(2, 4), FakeCell(0.2));
  EXPECT_EQ(events.messages.front(), "Folder 1 of 1, Filename P-1-2 (1 of 2), Sheet 1 of 1");

  EXPECT_EQ(Run({"P-1-1.xls", "none.xls"}), 17);
  EXPECT_THAT(events.errors, ElementsAre("Error while processing file /.../data/screen/none.xls"));
}

// Without a sample no column is available, so that the row of headers is empty.
TEST_F(Engine, SavesAWorkbookForAFolderWithoutSubFolders) {
  campaign.Put("a/P-1-1.xls", {});
  campaign.platform.files.Remove("/data/screen/a");
  ASSERT_EQ(Run(), 0);
  EXPECT_THAT(campaign.Output().Headers(), IsEmpty());
  EXPECT_THAT(Texts(), ElementsAre(HasSubstr("No file could be used")));
}

TEST_F(Engine, AsksBeforeTheNextFileIsReadAndGoesOn) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.Put("a/P-1-2.xls", {{1, "K1", 7, 0.2}});
  campaign.platform.message_loop.on_yield = [&] {
    if (events.processed == 0) engine->StopProcess();
  };
  campaign.platform.dialogs.button_answers = {"Continue"};
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(Texts(), ElementsAre("Stop Process?"));
  EXPECT_THAT(campaign.platform.dialogs.buttons[0].buttons, ElementsAre("Yes, Stop.", "Continue"));
  EXPECT_EQ(events.processed, 2);
  EXPECT_FALSE(engine->Stopped());
}

TEST_F(Engine, ReportsAConfirmedStopAndEndsTheRun) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.Put("a/P-1-2.xls", {{1, "K1", 7, 0.2}});
  campaign.platform.message_loop.on_yield = [&] {
    if (events.processed == 1) engine->StopProcess();
  };
  EXPECT_EQ(Run(), 17);
  EXPECT_TRUE(engine->Stopped());
  EXPECT_FALSE(engine->Running());
  EXPECT_THAT(Texts(), ElementsAre("Stop Process?", HasSubstr("\"frmMain.ProcessFolders\".")));
  EXPECT_EQ(campaign.platform.dialogs.plain.back().cause, "User interrupt occurred");
  EXPECT_FALSE(Saved());
  engine.reset();
  EXPECT_EQ(campaign.spreadsheet.applications_running, 0);
  EXPECT_EQ(campaign.spreadsheet.workbooks_open, 0);
}

TEST_F(Engine, ReportsAFailingSave) {
  campaign.Put("a/P-1-1.xls", {{1, "K1", 7, 0.1}});
  campaign.spreadsheet.fail_save_with = 61;
  EXPECT_EQ(Run(), 17);
  EXPECT_THAT(Texts(), ElementsAre(HasSubstr("\"frmMain.ProcessFolders\".")));
  EXPECT_EQ(campaign.platform.dialogs.plain.back().cause, "Disk full");
}

}  // namespace
}  // namespace korvex
