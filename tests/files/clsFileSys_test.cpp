#include "files/clsFileSys.h"

#include <gmock/gmock.h>

#include <functional>

#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "tests/support/fakes.h"
#include "text/clsStrings.h"

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
}

TEST(Helpers, DoWhatTheirNamesSay) {
  TestPlatform platform(PathStyle::kWindows);
  for (const char* file : {"c.xls", "Beta\\deep\\C.XLS", "alpha\\c.xls\\other.xls"}) {
    platform.files.AddFile("D:\\runs\\" + std::string(file));
  }
  platform.dialogs.folder_answers = {"D:\\Runs", "D:\\", ""};
  const clsFileSys& file_sys = SharedFileSys();
  std::string folder = "D:\\runs";
  auto& environment = platform.shell.environment;
  const struct {
    const char* result;
    std::function<std::string()> call;
  } cases[] = {
      {"D:\\runs\\Beta\\deep\\c.xls", [&] { return file_sys.FindFile(folder, "c.xls", true); }},
      {"D:\\runs\\", [&] { return folder; }},  // the separator is added in the caller's variable
      {"D:\\runs\\c.xls",
       [&] {
         platform.files.Deny("D:\\runs\\Beta");
         return file_sys.FindFile(folder, "c.xls", false);
       }},
      {"", [&] { return file_sys.FindFile(folder, "none.xls", false); }},
      {"D:\\Runs\\", [&] { return file_sys.BrowseFolder(nullptr); }},
      {"D:\\", [&] { return file_sys.BrowseFolder(nullptr); }},
      {"", [&] { return file_sys.BrowseFolder(nullptr); }},
      {"c", [&] { return file_sys.GetFileExtention("a.b.c", false, 3); }},
      {".äöü", [&] { return file_sys.GetFileExtention("a.äöü", true, 3); }},
      {"", [&] { return file_sys.GetFileExtention("archive.backup", false, 3); }},
      {".", [&] { return file_sys.GetFileExtention("archive.backup", true, 3); }},
      {".", [&] { return file_sys.GetFileExtention("README", true, 3); }},
      {"C:\\all.xls",
       [&] {
         file_sys.OpenFile("C:\\all.xls");
         return platform.shell.opened.back();
       }},
      {"C:\\TEMP", [] { return GetTempFolder(false); }},  // made when it is missing
      {"C:\\TEMP\\",
       [&] { return platform.files.FolderExists("C:\\TEMP") ? GetTempFolder(true) : ""; }},
      {"E:\\u\\",
       [&] {
         environment = {{"TEMP", ""}, {"TMP", "E:\\u"}};
         return GetTempFolder(true);
       }},
      {"E:\\t\\\\",  // a second separator is not avoided
       [&] {
         environment["TEMP"] = "E:\\t\\";
         return GetTempFolder(true);
       }},
      {"a é z", [] { return clsStrings().TrimJunk("\té a é z€\r\n"); }},
      {"", [] { return clsStrings().TrimJunk("\r\n é\t"); }},
  };
  for (const auto& c : cases) EXPECT_EQ(c.call(), c.result);
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
