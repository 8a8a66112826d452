#include "util/clsFileSys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/error.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "util/folder_listing.h"

namespace korvex {
namespace {

using testing::ElementsAre;

TEST(FileSys, SplitsPathsAtTheLastSeparator) {
  const struct {
    PathStyle style;
    const char* path;
    const char* folder;  // without separator
    const char* title;
    const char* bare_title;
    const char* without_extension;
  } cases[] = {
      {PathStyle::kWindows, "C:\\a\\P1-3-2.xls", "C:\\a", "P1-3-2.xls", "P1-3-2", "C:\\a\\P1-3-2"},
      {PathStyle::kWindows, "C:\\v1.2\\data", "C:\\v1.2", "data", "data", "C:\\v1.2\\data"},
      {PathStyle::kWindows, "\\\\srv\\s\\a.b.xls", "\\\\srv\\s", "a.b.xls", "a.b",
       "\\\\srv\\s\\a.b"},
      {PathStyle::kWindows, "a/b.xls", "", "a/b.xls", "a/b", "a/b"},
      {PathStyle::kLinux, "/a/P1-3-2.xls", "/a", "P1-3-2.xls", "P1-3-2", "/a/P1-3-2"},
      {PathStyle::kLinux, "/v1.2/data", "/v1.2", "data", "data", "/v1.2/data"},
      {PathStyle::kLinux, "/a\\b.xls", "", "a\\b.xls", "a\\b", "/a\\b"},
      {PathStyle::kLinux, "/a/", "/a", "", "", "/a/"},
  };
  for (const auto& c : cases) {
    const TestPlatform platform(c.style);
    const clsFileSys file_sys;
    EXPECT_EQ(file_sys.GetFilePath(c.path, false), c.folder) << c.path;
    EXPECT_EQ(file_sys.GetFileTitle(c.path, false), c.title) << c.path;
    EXPECT_EQ(file_sys.GetFileTitle(c.path, true), c.bare_title) << c.path;
    EXPECT_EQ(file_sys.DropExtention(c.path), c.without_extension) << c.path;
  }
}

TEST(FileSys, KeepsTheSeparatorOfAFolderOnlyWhenAsked) {
  const TestPlatform platform(PathStyle::kWindows);
  const clsFileSys file_sys;
  EXPECT_EQ(file_sys.GetFilePath("C:\\report.xls", true), "C:\\");
  EXPECT_EQ(file_sys.GetFilePath("report.xls", true), "");
  EXPECT_EQ(file_sys.GetFilePath("report.xls", false), "");
}

TEST(FileSys, LimitsTheLengthOfAnExtension) {
  const struct {
    const char* name;
    bool with_dot;
    int limit;
    const char* extension;
  } cases[] = {
      {"a.xls", false, 3, "xls"},
      {"a.xls", true, 3, ".xls"},
      {"archive.backup", false, 3, ""},
      {"archive.backup", true, 3, "."},
      {"README", false, 3, ""},
      {"README", true, 3, "."},
      {"a.", true, 3, "."},
      {"a.b.c", false, 3, "c"},
      {"a.äöü", false, 3, "äöü"},
  };
  const TestPlatform platform;
  for (const auto& c : cases)
    EXPECT_EQ(clsFileSys().GetFileExtention(c.name, c.with_dot, c.limit), c.extension) << c.name;
}

TEST(FileSys, FindsAFileDepthFirstInListingOrder) {
  TestPlatform platform(PathStyle::kWindows);
  platform.files.AddFile("D:\\runs\\c.xls");
  platform.files.AddFile("D:\\runs\\Beta\\deep\\C.XLS");
  platform.files.AddFile("D:\\runs\\alpha\\other.xls");
  platform.files.AddFolder("D:\\runs\\alpha\\c.xls");  // a folder of that name is no match
  std::string folder = "D:\\runs";
  EXPECT_EQ(clsFileSys().FindFile(folder, "c.xls", true), "D:\\runs\\Beta\\deep\\c.xls");
  EXPECT_EQ(folder, "D:\\runs\\");
  EXPECT_EQ(platform.message_loop.yields, 3);  // the entries looked at before the match

  platform.files.Fail(FileOperation::kList, "D:\\runs\\Beta", error_number::kPermissionDenied);
  EXPECT_EQ(clsFileSys().FindFile(folder, "c.xls", false), "D:\\runs\\c.xls");
  EXPECT_EQ(clsFileSys().FindFile(folder, "none.xls", false), "");
  std::string missing = "D:\\nowhere";
  EXPECT_EQ(clsFileSys().FindFile(missing, "c.xls", false), "");
  EXPECT_EQ(platform.message_loop.yields, 3);
}

TEST(FolderListing, SortsByUpperCasedName) {
  for (const PathStyle style : {PathStyle::kLinux, PathStyle::kWindows}) {
    TestPlatform platform(style);
    const std::string folder = JoinPath(platform.files.DefaultFolder(), "screen");
    for (const char* name : {"b.xls", "_.xls", "Z.xls", "a.xls", "é.xls", "10.xls", "9.xls"})
      platform.files.AddFile(JoinPath(folder, name));
    for (const char* name : {"Run2", "run10", "RUN1"})
      platform.files.AddFolder(JoinPath(folder, name));
    EXPECT_THAT(WorkbookNames(folder),
                ElementsAre("10.xls", "9.xls", "a.xls", "b.xls", "Z.xls", "_.xls", "é.xls"));
    EXPECT_THAT(SubFolderNames(folder), ElementsAre("RUN1", "run10", "Run2"));
  }
}

TEST(FolderListing, OrdersNamesThatDifferInCaseByTheirBytes) {
  TestPlatform platform;
  for (const char* name : {"/d/a", "/d/A", "/d/B"}) platform.files.AddFile(name);
  EXPECT_THAT(WorkbookNames("/d"), ElementsAre("A", "a", "B"));
  EXPECT_EQ(ErrorOf([] { WorkbookNames("/nowhere"); }).Number(), error_number::kPathNotFound);
}

}  // namespace
}  // namespace korvex
