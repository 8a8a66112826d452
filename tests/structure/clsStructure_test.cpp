#include "structure/clsStructure.h"

#include <gmock/gmock.h>

#include "structure/basFuncs_workbooks.h"
#include "tests/support/campaign.h"
#include "tests/support/errors.h"
#include "tests/support/workbook_bytes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Structure : public testing::Test {
 protected:
  void Construct() { structure.Constructor(campaign.folder, {}, nullptr); }
  Workbook& Open(const TestSheet& sheet) {
    campaign.PutSheets("a.xls", {sheet});
    return application.OpenWorkbook(campaign.Path("a.xls"), {});
  }
  const std::vector<std::string>& Messages() const { return campaign.platform.dialogs.texts; }

  Campaign campaign;
  EmbeddedApplication application{campaign.platform.files};
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
  TestSheet full{"data", {{"#"}}};
  for (int column = 2; column <= 256; ++column) full.rows[0].emplace_back(column);
  campaign.PutSheets("a/P-1-1.xls", {full});
  Construct();
  EXPECT_EQ(structure.AvailableColPosition("256"), 256);
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
    std::string missing;
  } cases[] = {
      {"all are there", {"compound ID"}, {"plate", "delta od", "compound ID"}, "Delta OD", ""},
      {"key columns",
       {"compound ID", "Batch", "Run\n1"},
       {"plate", "compound ID"},
       "Delta OD",
       "Missing: key columns \"Batch\", \"Run\\n1\"."},
      {"data column",
       {"compound ID"},
       {"plate", "Dose", "compound ID"},
       "Absorbance",
       "Missing: output column \"Dose\"; data column \"Absorbance\"."},
      {"no data column",
       {"compound ID"},
       {"plate", "compound ID"},
       "",
       "No data column is chosen."},
  };
  for (const auto& c : cases) {
    campaign.SetKeys(c.keys);
    campaign.SetOutputs(c.outputs);
    campaign.Set("File Structure", "Data Column", c.data_column);
    Construct();
    EXPECT_EQ(structure.Discrepancy(), !c.missing.empty()) << c.condition;
    EXPECT_EQ(MissingText(structure.Missing()), c.missing);
    EXPECT_THAT(structure.KeyColsArray(), ElementsAre("compound ID")) << c.condition;
    EXPECT_THAT(structure.OutputColsArray(), ElementsAre("plate", "compound ID")) << c.condition;
  }
  EXPECT_EQ(structure.OutputColPosition("compound ID"), 2);
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Structure, ReportsASampleThatCannotBeUsed) {
  Construct();
  EXPECT_THAT(Messages(),
              ElementsAre("No file could be used in order to determine structure of file. Please "
                          "make sure you have files in all sub-folders of chosen processing "
                          "folder."));
  EXPECT_EQ(campaign.platform.dialogs.buttons.back().cause, "/data/screen has no sub-folder.");
  const TestSheet samples[] = {{"data", {{1, 2}, {3, 4}}},
                               {"data", {{"#", "Well", "WELL"}}},
                               {"data", {{"#", "DATE"}}},
                               {"Sheet1", {{"#", "Well"}}}};
  for (const TestSheet& sheet : samples) {
    campaign.PutSheets("a/P-1-1.xls", {sheet});
    campaign.platform.dialogs.texts.clear();
    Construct();
    EXPECT_THAT(Messages(),
                ElementsAre(HasSubstr("\"clsStructure.Constructor\""),
                            HasSubstr("opening a file to use as a sample for format settings")));
    EXPECT_THAT(campaign.platform.dialogs.buttons.back().cause, HasSubstr("P-1-1.xls"));
    EXPECT_EQ(campaign.spreadsheet.running, 0);
    EXPECT_FALSE(structure.Discrepancy() || structure.SampleUsable());
  }
}

TEST_F(Structure, UsesTheFirstSelectedFileAndTheApplicationThatItIsGiven) {
  campaign.ProcessSelectedFiles();
  campaign.Put("P-1-1.xls", {});
  structure.Constructor("", {campaign.Path("P-1-1.xls"), "/none.xls"}, &application);
  EXPECT_EQ(structure.AvailableColPosition("Delta OD"), 4);
  EXPECT_EQ(structure.AvailableColPosition("Batch"), 0) << "a missing name, which is left behind";
  EXPECT_THAT(structure.AvailableColsArray(), testing::Contains("Batch"));
  EXPECT_THAT(campaign.spreadsheet.calls, IsEmpty());
  EXPECT_EQ(application.WorkbookCount(), 0);
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

TEST_F(Structure, FindsTheLowestRowThatIsNotNumeric) {
  const struct {
    std::vector<std::vector<TestCell>> rows;
    int last_row;
    int header_row;
  } cases[] = {
      {{{"12/03/2002"}, {"#"}, {1}, {2}}, 4, 2},
      {{{"#"}, {1}, {"total"}, {3}}, 4, 3},
      {{{"#"}, {" 7 "}, {{}, "x"}}, 3, 1},
      {{{1}, {2}}, 2, 0},
      {{}, 1, 0},
  };
  for (const auto& c : cases) {
    Workbook& workbook = Open({"data", c.rows});
    EXPECT_EQ(GetLastRow(GetDataSheet(workbook)), c.last_row);
    EXPECT_EQ(GetHeaderRow(workbook), c.header_row);
  }
}

TEST_F(Structure, PassesOverRowsThatOnlyHaveFormats) {
  campaign.platform.files.AddFile(campaign.Path("a.xls"), test::DataFile("writeexcel-charts.xls"));
  Worksheet& sheet = GetDataSheet(application.OpenWorkbook(campaign.Path("a.xls"), {}));
  EXPECT_EQ(sheet.LastCell().row, 9);
  EXPECT_EQ(GetLastRow(sheet), 3);
}

TEST_F(Structure, TellsAboutAMissingDataSheetUnlessItsFolderHasGone) {
  Workbook& workbook = Open({"results", {{"#"}}});
  EXPECT_EQ(ErrorOf([&] { GetHeaderRow(workbook); }).Number(), error_number::kCannotPerform);
  EXPECT_EQ(Messages().size(), 1u);
  campaign.platform.files.Remove(campaign.folder);
  EXPECT_EQ(ErrorOf([&] { CheckSheetExists(workbook); }).Number(), error_number::kPathNotFound);
}

}  // namespace
}  // namespace korvex
