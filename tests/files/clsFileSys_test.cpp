#include "files/clsFileSys.h"

#include <gmock/gmock.h>

#include "files/folder_listing.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;

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
  const TestPlatform platform;
  for (const auto& [name, extension] :
       {std::pair{"a.b.c", "c"}, {"archive.backup", ""}, {"README", ""}, {"a.äöü", "äöü"}}) {
    EXPECT_EQ(clsFileSys().GetFileExtention(name, false, 3), extension) << name;
    EXPECT_EQ(clsFileSys().GetFileExtention(name, true, 3), std::string(".") + extension) << name;
  }
}

TEST(FileSys, FindsAFileDepthFirstInListingOrder) {
  TestPlatform platform(PathStyle::kWindows);
  for (const char* file : {"c.xls", "Beta\\deep\\C.XLS", "alpha\\c.xls\\other.xls"}) {
    platform.files.AddFile("D:\\runs\\" + std::string(file));
  }
  std::string folder = "D:\\runs";
  EXPECT_EQ(clsFileSys().FindFile(folder, "c.xls", true), "D:\\runs\\Beta\\deep\\c.xls");
  EXPECT_EQ(folder, "D:\\runs\\");
  platform.files.Deny("D:\\runs\\Beta");
  EXPECT_EQ(clsFileSys().FindFile(folder, "c.xls", false), "D:\\runs\\c.xls");
  EXPECT_EQ(clsFileSys().FindFile(folder, "none.xls", false), "");
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

}  // namespace
}  // namespace korvex
