#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "files/clsFileSys.h"
#include "files/folder_listing.h"
#include "files/folder_paths.h"
#include "files/stray_files.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "text/text.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(FileSys, SplitsPathsAtTheLastSeparator) {
  const struct {
    PathStyle style;
    const char* path;
    const char* folder;  // with separator
    const char* title;
    const char* bare_title;
  } cases[] = {
      {PathStyle::kWindows, "C:\\a\\P1-3-2.xls", "C:\\a\\", "P1-3-2.xls", "P1-3-2"},
      {PathStyle::kWindows, "C:\\v1.2\\data", "C:\\v1.2\\", "data", "data"},
      {PathStyle::kWindows, "\\\\srv\\s\\a.b.äöü", "\\\\srv\\s\\", "a.b.äöü", "a.b"},
      {PathStyle::kWindows, "a/b.xls", "", "a/b.xls", "a/b"},
      {PathStyle::kLinux, "/v1.2/archive.backup", "/v1.2/", "archive.backup", "archive"},
      {PathStyle::kLinux, "/a\\b.", "/", "a\\b.", "a\\b"},
      {PathStyle::kLinux, "/a/", "/a/", "", ""},
  };
  for (const auto& c : cases) {
    const TestPlatform platform(c.style);
    const clsFileSys file_sys;
    const std::string folder = c.folder;
    EXPECT_EQ(file_sys.GetFilePath(c.path, true), folder) << c.path;
    EXPECT_EQ(file_sys.GetFilePath(c.path, false),
              folder.substr(0, folder.size() - !folder.empty()));
    EXPECT_EQ(file_sys.GetFileTitle(c.path, false), c.title) << c.path;
    EXPECT_EQ(file_sys.GetFileTitle(c.path, true), c.bare_title) << c.path;
    EXPECT_EQ(file_sys.DropExtention(c.path), folder + c.bare_title) << c.path;
  }
}

// Among them what the system names and no program calls.
TEST(FileSys, FindsBrowsesOpensAndTrims) {
  TestPlatform platform(PathStyle::kWindows);
  for (const char* file : {"c.xls", "Beta\\deep\\C.XLS", "alpha\\c.xls\\other.xls"}) {
    platform.files.AddFile("D:\\runs\\" + std::string(file));
  }
  const clsFileSys& file_sys = SharedFileSys();
  std::string folder = "D:\\runs";
  EXPECT_EQ(file_sys.FindFile(folder, "c.xls", true), "D:\\runs\\Beta\\deep\\c.xls");
  EXPECT_EQ(folder, "D:\\runs\\");  // the separator is added in the caller's variable
  platform.files.Deny("D:\\runs\\Beta");
  EXPECT_EQ(file_sys.FindFile(folder, "c.xls", false), "D:\\runs\\c.xls");
  EXPECT_EQ(file_sys.FindFile(folder, "none.xls", false), "");

  platform.dialogs.folder_answers = {"D:\\Runs", "D:\\", ""};
  for (const char* chosen : {"D:\\Runs\\", "D:\\", ""}) {
    EXPECT_EQ(file_sys.BrowseFolder(nullptr), chosen);
  }
  EXPECT_EQ(file_sys.GetFileExtention("a.b.c", false, 3), "c");
  EXPECT_EQ(file_sys.GetFileExtention("a.äöü", true, 3), ".äöü");
  EXPECT_EQ(file_sys.GetFileExtention("archive.backup", false, 3), "");
  EXPECT_EQ(file_sys.GetFileExtention("archive.backup", true, 3), ".");
  EXPECT_EQ(file_sys.GetFileExtention("README", true, 3), ".");
  file_sys.OpenFile("C:\\all.xls");
  EXPECT_THAT(platform.shell.opened, ElementsAre("C:\\all.xls"));

  EXPECT_EQ(GetTempFolder(false), "C:\\TEMP");
  EXPECT_TRUE(platform.files.FolderExists("C:\\TEMP"));
  auto& environment = platform.shell.environment;
  environment = {{"TEMP", ""}, {"TMP", "E:\\u"}};
  EXPECT_EQ(GetTempFolder(true), "E:\\u\\");
  environment["TEMP"] = "E:\\t\\";
  EXPECT_EQ(GetTempFolder(true), "E:\\t\\\\");  // a second separator is not avoided
  EXPECT_EQ(clsStrings().TrimJunk("\té a é z€\r\n"), "a é z");
}

TEST(ShortenPath, KeepsDriveParentAndFolder) {
  const struct {
    PathStyle style;
    const char* path;
    const char* shortened;
  } cases[] = {
      {PathStyle::kWindows, "C:\\", "C:\\"},
      {PathStyle::kWindows, "C:\\Data", "C:\\Data"},
      {PathStyle::kWindows, "C:\\Data\\Run1", "C:\\...\\Data\\Run1"},
      {PathStyle::kWindows, "C:\\Data\\Plates\\Run1\\", "C:\\...\\Plates\\Run1"},
      {PathStyle::kWindows, "\\\\srv\\lab", "\\\\srv\\lab"},
      {PathStyle::kWindows, "\\\\srv\\lab\\a\\b\\c", "\\\\srv\\lab\\...\\b\\c"},
      {PathStyle::kLinux, "/", "/"},
      {PathStyle::kLinux, "/data", "/data"},
      {PathStyle::kLinux, "/data/plates/../plates/run1", "/.../plates/run1"},
  };
  for (const auto& c : cases) {
    TestPlatform platform(c.style);
    platform.files.AddFolder(c.path);
    EXPECT_EQ(ShortenPath(c.path, false), c.shortened);
    EXPECT_EQ(ShortenPath(c.path, true), WithSeparator(c.shortened));
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

TEST(FolderListing, SortsByUpperCasedNameThenByBytes) {
  for (const PathStyle style : {PathStyle::kLinux, PathStyle::kWindows}) {
    TestPlatform platform(style);
    const std::string folder = JoinPath(platform.files.DefaultFolder(), "screen");
    for (const char* name : {"b.xls", "_.xls", "Z.xls", "a.xls", "é.xls", "10.xls", "9.xls"})
      platform.files.AddFile(JoinPath(folder, name));
    for (const char* name : {"Run2", "run10", "RUN1"})
      platform.files.AddFolder(JoinPath(folder, name));
    EXPECT_THAT(ListedFolders().Workbooks(folder),
                ElementsAre("10.xls", "9.xls", "a.xls", "b.xls", "Z.xls", "_.xls", "é.xls"));
    EXPECT_THAT(ListedFolders().SubFolders(folder), ElementsAre("RUN1", "run10", "Run2"));
  }
  TestPlatform platform;
  for (const char* name : {"/d/a", "/d/A", "/d/B"}) platform.files.AddFile(name);
  EXPECT_THAT(ListedFolders().Workbooks("/d"), ElementsAre("A", "a", "B"));
}

TEST(FolderPaths, FindTheDriveAndTheWayDownFromAFolder) {
  const struct {
    PathStyle style;
    const char* folder;
    std::vector<std::string> drives;
    const char* drive;
    std::vector<std::string> way;
  } cases[] = {
      {PathStyle::kLinux,
       "/data/screens/run1",
       {"/", "/data", "/data/screens"},
       "/data/screens",
       {"run1"}},
      {PathStyle::kLinux, "/data/screens", {"/", "/data", "/data/screens"}, "/data/screens", {}},
      {PathStyle::kLinux, "/data/screens2", {"/", "/data/screens"}, "/", {"data", "screens2"}},
      {PathStyle::kLinux, "/DATA", {"/", "/data"}, "/", {"DATA"}},
      {PathStyle::kWindows, "c:\\plates\\run1", {"A:\\", "C:\\"}, "C:\\", {"plates", "run1"}},
      {PathStyle::kWindows, "\\\\lab\\plates\\run1", {"C:\\"}, "\\\\lab\\plates", {"run1"}},
  };
  for (const auto& c : cases) {
    const TestPlatform platform(c.style);
    EXPECT_EQ(DriveOf(c.folder, c.drives), c.drive);
    EXPECT_EQ(NamesBelow(c.drive, c.folder), c.way) << c.folder;
  }
  const TestPlatform platform(PathStyle::kWindows);
  EXPECT_THAT(NamesBelow("C:\\plates", "C:\\plates2"), testing::IsEmpty());
}

TEST(FolderPaths, ClimbToAFolderThatExists) {
  TestPlatform platform(PathStyle::kWindows);
  platform.files.AddFolder("C:\\plates");
  EXPECT_EQ(NearestExistingFolder("C:\\plates\\gone\\run1"), "C:\\plates");
  EXPECT_EQ(NearestExistingFolder("C:\\gone"), "C:\\");
  EXPECT_EQ(NearestExistingFolder("E:\\stick"), "C:\\");
}

TEST(StrayFiles, AreToldForWhatTheyAre) {
  const TestPlatform platform;
  const struct {
    const char* name;
    const char* told;  // empty for a name of any other file
  } cases[] = {
      {"~$P1-1-1.xls", "it says that P1-1-1.xls is open in a spreadsheet application"},
      {".~lock.P1-1-1.ods#", "it says that P1-1-1.ods is open"},
      {"THUMBS.DB", "Windows keeps small pictures"},
      {"._P1-1-1.xls", "macOS keeps in it what it notes about P1-1-1.xls, hidden from view"},
      {".DS_Store", "macOS keeps the look of the folder in it, hidden from view. Delete it"},
      {"~$", ""},
      {"P~$1-1-1.xls", ""},
      {"Thumbs.db.xls", ""},
  };
  for (const auto& c : cases) {
    const std::string path = std::string("/data/a/") + c.name;
    EXPECT_EQ(StrayFileText(path).empty(), *c.told == 0) << c.name;
    const Error error = ErrorOf(
        [&] { OpenUnlessStray(path, [] { throw Error(error_number::kAutomation, "not read"); }); });
    EXPECT_THAT(error.Description(), testing::HasSubstr(*c.told ? c.told : "not read"));
    EXPECT_EQ(error.Description().starts_with(path + " is not a workbook: "), *c.told != 0);
  }
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
