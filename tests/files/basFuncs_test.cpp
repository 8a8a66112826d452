#include "files/basFuncs_paths.h"
#include "structure/basFuncs_workbooks.h"

#include <gmock/gmock.h>

#include "files/basGeneral.h"
#include "tests/support/campaign.h"
#include "tests/support/errors.h"
#include "tests/support/workbook_bytes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(ShortenPath, KeepsDriveParentAndFolder) {
  const struct {
    PathStyle style;
    const char* path;
    const char* shortened;
    const char* with_slash;
  } cases[] = {
      {PathStyle::kWindows, "C:\\", "C:\\", "C:\\"},
      {PathStyle::kWindows, "C:\\Data", "C:\\Data", "C:\\Data\\"},
      {PathStyle::kWindows, "C:\\Data\\Run1", "C:\\...\\Data\\Run1", "C:\\...\\Data\\Run1\\"},
      {PathStyle::kWindows, "C:\\Data\\Plates\\Run1\\", "C:\\...\\Plates\\Run1",
       "C:\\...\\Plates\\Run1\\"},
      {PathStyle::kWindows, "\\\\srv\\lab", "\\\\srv\\lab", "\\\\srv\\lab\\"},
      {PathStyle::kWindows, "\\\\srv\\lab\\a\\b\\c", "\\\\srv\\lab\\...\\b\\c",
       "\\\\srv\\lab\\...\\b\\c\\"},
      {PathStyle::kLinux, "/", "/", "/"},
      {PathStyle::kLinux, "/data", "/data", "/data/"},
      {PathStyle::kLinux, "/data/plates/../plates/run1", "/.../plates/run1", "/.../plates/run1/"},
  };
  for (const auto& c : cases) {
    TestPlatform platform(c.style);
    platform.files.AddFolder(c.path);
    EXPECT_EQ(ShortenPath(c.path, false), c.shortened);
    EXPECT_EQ(ShortenPath(c.path, true), c.with_slash);
  }
}

TEST(DisplayPath, ShortensTheFolderOfAFileAndNamesOneThatIsMissing) {
  TestPlatform platform;
  platform.files.AddFile("/data/plates/run1/x.xls");
  EXPECT_EQ(GetDisplayPath("/data/plates/run1/y.xls"), "/.../plates/run1/y.xls");
  EXPECT_EQ(GetDisplayPath("/x.xls"), "/x.xls");
  for (const std::string folder : {"/data/run9", "/data/plates/run1/x.xls"}) {
    const Error error = ErrorOf([&] { GetDisplayPath(folder + "/x.xls"); });
    EXPECT_EQ(error.Number(), error_number::kPathNotFound) << folder;
    EXPECT_THAT(error.Description(), HasSubstr("\"" + folder));
  }
}

TEST(CountFiles, CountsThroughAllSubFolders) {
  TestPlatform platform;
  for (const char* file : {"/d/1", "/d/a/2", "/d/a/b/3", "/d/a/b/4", "/e/5"})
    platform.files.AddFile(file);
  EXPECT_EQ(CountFiles("/d"), 4);
  EXPECT_EQ(CountFiles("/d/a/"), 3);
  platform.files.Deny("/d/a/b");
  EXPECT_EQ(ErrorOf([] { CountFiles("/d"); }).Number(), error_number::kPermissionDenied);
}

TEST(FileIsWritable, TellsWithoutATrace) {
  TestPlatform platform;
  platform.files.AddFile("/out/old.xls", "content");
  platform.files.AddFile("/out/in_use.xls");
  platform.files.Fail(FileOperation::kAppend, "/out/in_use.xls", error_number::kPermissionDenied);
  for (const char* name : {"/out/new.xls", "/out/old.xls"}) EXPECT_TRUE(FileIsWritable(name));
  for (const char* name : {"/out/in_use.xls", "/none/x.xls", "/out", "", "/out/"}) {
    EXPECT_FALSE(FileIsWritable(name)) << name;
  }
  EXPECT_EQ(platform.files.List("/out").size(), 2u);
  EXPECT_EQ(platform.files.Content("/out/old.xls"), "content");
}

class WorkbookHelpers : public testing::Test {
 protected:
  Workbook& Open(const TestSheet& sheet) {
    campaign.PutSheets("a.xls", {sheet});
    return application.OpenWorkbook(campaign.Path("a.xls"), {});
  }

  Campaign campaign;
  EmbeddedApplication application{campaign.platform.files};
};

TEST_F(WorkbookHelpers, FindTheLowestRowThatIsNotNumeric) {
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

TEST_F(WorkbookHelpers, PassOverRowsThatAreOnlyFormatted) {
  campaign.platform.files.AddFile(campaign.Path("a.xls"), test::DataFile("writeexcel-charts.xls"));
  Worksheet& sheet = GetDataSheet(application.OpenWorkbook(campaign.Path("a.xls"), {}));
  EXPECT_EQ(sheet.LastCell().row, 9);
  EXPECT_EQ(GetLastRow(sheet), 3);
}

TEST_F(WorkbookHelpers, TellAboutAMissingDataSheetAndFailSilently) {
  Workbook& workbook = Open({"results", {{"#"}}});
  EXPECT_EQ(ErrorOf([&] { GetHeaderRow(workbook); }).Number(), error_number::kCannotPerform);
  EXPECT_THAT(campaign.platform.dialogs.texts,
              ElementsAre("No \"data\" sheet found in file /.../data/screen/a.xls"));
  campaign.platform.files.Remove(campaign.folder);
  EXPECT_EQ(ErrorOf([&] { CheckSheetExists(workbook); }).Number(), error_number::kPathNotFound);
}

TEST(MessageBox, ReducesADefaultButtonAndFillsInWhatIsLeftOut) {
  TestPlatform platform;
  for (const auto& [passed, shown] : {std::pair{0, 0}, {1, 0}, {2, 1}, {-1, -1}}) {
    int default_button = passed;
    ShowMessageBox("?", {"&Yes", "No"}, "T", 3, default_button, 0);
    EXPECT_EQ(default_button, shown) << passed;
    EXPECT_EQ(platform.dialogs.buttons.back().default_button, shown) << passed;
  }
  platform.dialogs.button_answers = {"&No"};
  EXPECT_EQ(ShowMessageBox("Go on?", {"&Yes", "&No"}), "&No");
  EXPECT_EQ(platform.dialogs.buttons.back().title, "Message");
  EXPECT_EQ(platform.dialogs.buttons.back().sound, 1);
}

}  // namespace
}  // namespace korvex
