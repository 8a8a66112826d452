#include "structure/clsStructure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/campaign.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kBadSample[] =
    "Problems occurred when opening a file to use as a sample for format settings. Please double "
    "click the folder or parent-folder you want to process, and make sure it has the files with a "
    "correct format in them.";

class Structure : public testing::Test {
 protected:
  void Construct() { structure.Constructor(campaign.folder, {}, nullptr); }
  const std::vector<std::string>& Messages() const { return campaign.platform.dialogs.texts; }

  Campaign campaign;
  clsStructure structure;
};

TEST_F(Structure, ReadsTheHeaderRowOfTheFirstFileOfTheFirstSubFolder) {
  campaign.Put("B/A-1-1.xls", {});
  campaign.PutContent(
      "a/P2-1-1.xls",
      {{FakeSheet("notes", {{"#", "other"}}),
        FakeSheet("Data", {{"12/03/2002"}, {"#", "Well", 7, " ", "after a blank"}, {1, "A01"}})}});
  campaign.Put("a/P3-1-1.xls", {});
  campaign.SetKeys({"WELL"});
  campaign.SetOutputs({"7", "Delta OD", "day_num"});
  campaign.Set("File Structure", "Data Column", "#");
  Construct();
  EXPECT_TRUE(structure.SampleUsable());
  EXPECT_EQ(structure.SampleFileUsed(false), "/data/screen/a/P2-1-1.xls");
  EXPECT_EQ(structure.SampleFileUsed(true), "/.../screen/a/P2-1-1.xls");
  EXPECT_THAT(structure.AvailableColsArray(),
              ElementsAre("Filename", "Date", "day_num", "#", "Well", "7"));
  EXPECT_EQ(structure.AvailableColPosition("well"), 2);
  EXPECT_EQ(structure.AvailableColPosition("DATE"), -1);
  EXPECT_EQ(structure.KeyColPosition("Well"), 2);
  EXPECT_EQ(structure.DataColumn(), "#");
  EXPECT_TRUE(structure.Discrepancy());  // "Delta OD" is configured, and the sample lacks it
  EXPECT_THAT(structure.OutputColsArray(), ElementsAre("7", "day_num"));
  EXPECT_EQ(structure.OutputColPosition("day_num"), 3);  // the name left out leaves a gap
  EXPECT_EQ(campaign.spreadsheet.applications_running, 0);
  EXPECT_EQ(campaign.spreadsheet.workbooks_open, 0);
}

TEST_F(Structure, TakesTheDataColumnOutOfTheOutputColumns) {
  campaign.Put("a/P-1-1.xls", {});
  campaign.SetOutputs({"plate", "delta od", "compound ID"});
  Construct();
  EXPECT_THAT(structure.OutputColsArray(), ElementsAre("plate", "compound ID"));
  EXPECT_EQ(structure.OutputColPosition("compound ID"), 2);
  EXPECT_FALSE(structure.Discrepancy());
}

TEST_F(Structure, NoticesEveryConfiguredColumnThatTheSampleLacks) {
  campaign.Put("a/P-1-1.xls", {});
  Construct();
  EXPECT_FALSE(structure.Discrepancy());

  campaign.SetKeys({"compound ID", "Batch"});
  Construct();
  EXPECT_TRUE(structure.Discrepancy());
  EXPECT_THAT(structure.KeyColsArray(), ElementsAre("compound ID"));

  campaign.SetKeys({"compound ID"});
  campaign.Set("File Structure", "Data Column", "Absorbance");
  Construct();
  EXPECT_TRUE(structure.Discrepancy());

  campaign.Set("File Structure", "Data Column", "Delta OD");
  campaign.SetKeys({});
  campaign.SetOutputs({});
  Construct();
  EXPECT_FALSE(structure.Discrepancy());
  EXPECT_THAT(structure.KeyColsArray(), IsEmpty());
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Structure, LooksUpAMissingNameAsZeroAndLeavesItBehind) {
  campaign.Put("a/P-1-1.xls", {});
  Construct();
  EXPECT_EQ(structure.AvailableColPosition("Batch"), 0);
  EXPECT_EQ(structure.KeyColPosition("Batch"), 0);
  EXPECT_THAT(structure.AvailableColsArray(), testing::Contains("Batch"));
  EXPECT_THAT(structure.KeyColsArray(), ElementsAre("compound ID", "Batch"));
}

TEST_F(Structure, TellsTheUserWhenThereIsNoSample) {
  campaign.platform.files.AddFolder("/data/screen/a");
  campaign.Put("b/P-1-1.xls", {});
  Construct();
  EXPECT_THAT(Messages(),
              ElementsAre("No file could be used in order to determine structure of file. Please "
                          "make sure you have files in all sub-folders of chosen processing "
                          "folder."));
  EXPECT_THAT(campaign.spreadsheet.calls, IsEmpty());
}

TEST_F(Structure, ReportsASampleThatCannotBeUsed) {
  const FakeSheet no_header("data", {{1, 2}, {3, 4}});
  const FakeSheet twice("data", {{"#", "Well", "WELL"}});
  const FakeSheet pseudo("data", {{"#", "DATE"}});
  const FakeSheet no_data("Sheet1", {{"#", "Well"}});
  for (const FakeSheet& sheet : {no_header, twice, pseudo, no_data}) {
    campaign.PutContent("a/P-1-1.xls", {{sheet}});
    campaign.platform.dialogs.texts.clear();
    Construct();
    EXPECT_THAT(Messages(), ElementsAre(HasSubstr("\"clsStructure.Constructor\""), kBadSample));
    EXPECT_EQ(campaign.spreadsheet.applications_running, 0);
    EXPECT_EQ(campaign.spreadsheet.workbooks_open, 0);
    EXPECT_FALSE(structure.Discrepancy());
    EXPECT_FALSE(structure.SampleUsable());
  }
}

TEST_F(Structure, UsesTheFirstSelectedFileAndTheApplicationThatItIsGiven) {
  campaign.ProcessSelectedFiles();
  campaign.Put("P-1-1.xls", {});
  const auto application = campaign.spreadsheet.CreateApplication();
  structure.Constructor("", {campaign.Path("P-1-1.xls"), "/none.xls"}, application.get());
  EXPECT_EQ(structure.AvailableColPosition("Delta OD"), 4);
  EXPECT_EQ(campaign.spreadsheet.applications_running, 1);
  EXPECT_THAT(campaign.spreadsheet.calls,
              ElementsAre("CreateApplication", "Visible = False", "ScreenUpdating = False",
                          "DisplayAlerts = False", "Workbooks.Open /data/screen/P-1-1.xls",
                          "Close P-1-1.xls"));
}

TEST_F(Structure, StoresTheUsersChoice) {
  campaign.Put("a/P-1-1.xls", {});
  Construct();
  clsArray names;
  names.AddTexts({"plate", "compound ID"});
  structure.SetOutputColsArray(names.Items());
  structure.SetKeyColsArray(names.Items());
  structure.SetDataColumn("#");
  EXPECT_EQ(campaign.platform.settings.Get("File Structure", "Output Columns"),
            "plate<-- -->compound ID");
  EXPECT_THAT(structure.OutputColsArray(), ElementsAre("plate", "compound ID"));
  EXPECT_THAT(structure.KeyColsArray(), ElementsAre("plate", "compound ID"));
  EXPECT_EQ(structure.DataColumn(), "#");
  names.Clear();
  EXPECT_EQ(ErrorOf([&] { structure.SetKeyColsArray(names.Items()); }).Number(), 13);
}

}  // namespace
}  // namespace korvex
