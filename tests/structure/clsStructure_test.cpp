#include "structure/clsStructure.h"

#include <gmock/gmock.h>

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
  campaign.PutSheets(
      "a/P2-1-1.xls",
      {{"notes", {{"#", "other"}}},
       {"Data", {{"12/03/2002"}, {"#", "Well", 7, " ", "after a blank"}, {1, "A01"}}}});
  campaign.Put("a/P3-1-1.xls", {});
  campaign.SetKeys({"WELL"});
  campaign.SetOutputs({"7", "Delta OD", "day_num"});
  campaign.Set("File Structure", "Data Column", "#");
  Construct();
  EXPECT_TRUE(structure.SampleUsable());
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
  EXPECT_EQ(campaign.spreadsheet.running, 0);
}

TEST_F(Structure, ReadsHeadersUpToTheEdgeOfTheSheet) {
  std::string headers;
  for (int i = 1; i <= 16384; ++i) {
    headers += "<Cell><Data ss:Type='String'>c" + std::to_string(i) + "</Data></Cell>";
  }
  const std::string workbook =
      "<Workbook xmlns='urn:schemas-microsoft-com:office:spreadsheet' "
      "xmlns:ss='urn:schemas-microsoft-com:office:spreadsheet'><Worksheet ss:Name='data'><Table>"
      "<Row>";
  campaign.platform.files.AddFile(campaign.Path("a/P-1-1.xls"),
                                  workbook + headers + "</Row></Table></Worksheet></Workbook>");
  Construct();
  EXPECT_EQ(structure.AvailableColPosition("c16384"), 16384);
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Structure, NamesSettingAndColumnOfAListThatHasOneTwice) {
  campaign.Put("a/P-1-1.xls", {});
  const std::pair<const char*, const char*> lists[] = {
      {"Keys Columns", "plate<-- -->PLATE"}, {"Output Columns", "#<-- -->Plate<-- -->PLATE"}};
  for (const auto& [setting, list] : lists) {
    campaign.Set("File Structure", setting, list);
    Construct();
    EXPECT_EQ(campaign.platform.dialogs.plain.back().cause,
              std::string("The setting \"") + setting +
                  "\" names the column \"PLATE\" twice. Choose its columns anew.");
    campaign.Set("File Structure", setting, "");
  }
}

TEST_F(Structure, NoticesEveryConfiguredColumnThatTheSampleLacks) {
  campaign.Put("a/P-1-1.xls", {});
  const struct {
    const char* condition;
    std::vector<std::string> keys, outputs;
    const char* data_column;
    bool discrepancy;
  } cases[] = {
      {"all are there", {"compound ID"}, {"plate", "delta od", "compound ID"}, "Delta OD", false},
      {"key column", {"compound ID", "Batch"}, {"plate", "compound ID"}, "Delta OD", true},
      {"data column", {"compound ID"}, {"plate", "compound ID"}, "Absorbance", true},
  };
  for (const auto& c : cases) {
    campaign.SetKeys(c.keys);
    campaign.SetOutputs(c.outputs);
    campaign.Set("File Structure", "Data Column", c.data_column);
    Construct();
    EXPECT_EQ(structure.Discrepancy(), c.discrepancy) << c.condition;
    EXPECT_THAT(structure.KeyColsArray(), ElementsAre("compound ID")) << c.condition;
    EXPECT_THAT(structure.OutputColsArray(), ElementsAre("plate", "compound ID")) << c.condition;
  }
  EXPECT_EQ(structure.OutputColPosition("compound ID"), 2);
  campaign.SetKeys({});
  campaign.SetOutputs({});
  campaign.Set("File Structure", "Data Column", "Delta OD");
  Construct();
  EXPECT_FALSE(structure.Discrepancy()) << "nothing is configured";
  EXPECT_THAT(structure.KeyColsArray(), IsEmpty());
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Structure, ReportsASampleThatCannotBeUsed) {
  const TestSheet samples[] = {{"data", {{1, 2}, {3, 4}}},
                               {"data", {{"#", "Well", "WELL"}}},
                               {"data", {{"#", "DATE"}}},
                               {"Sheet1", {{"#", "Well"}}}};
  for (const TestSheet& sheet : samples) {
    campaign.PutSheets("a/P-1-1.xls", {sheet});
    campaign.platform.dialogs.texts.clear();
    Construct();
    EXPECT_THAT(Messages(), ElementsAre(HasSubstr("\"clsStructure.Constructor\""), kBadSample));
    EXPECT_EQ(campaign.spreadsheet.running, 0);
    EXPECT_FALSE(structure.Discrepancy() || structure.SampleUsable());
  }
}

TEST_F(Structure, UsesTheFirstSelectedFileAndTheApplicationThatItIsGiven) {
  campaign.ProcessSelectedFiles();
  campaign.Put("P-1-1.xls", {});
  const auto application = campaign.spreadsheet.CreateApplication();
  structure.Constructor("", {campaign.Path("P-1-1.xls"), "/none.xls"}, application.get());
  EXPECT_EQ(structure.AvailableColPosition("Delta OD"), 4);
  EXPECT_EQ(structure.AvailableColPosition("Batch"), 0) << "a missing name, which is left behind";
  EXPECT_THAT(structure.AvailableColsArray(), testing::Contains("Batch"));
  EXPECT_EQ(campaign.spreadsheet.running, 1);
  EXPECT_EQ(application->WorkbookCount(), 0);
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
  EXPECT_THAT(structure.KeyColsArray(), ElementsAre("plate", "compound ID"));
  EXPECT_EQ(structure.DataColumn(), "#");
  names.Clear();
  EXPECT_EQ(ErrorOf([&] { structure.SetKeyColsArray(names.Items()); }).Number(), 13);
}

}  // namespace
}  // namespace korvex
