#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/error.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "util/basFuncs.h"

namespace korvex {
namespace {

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
      {PathStyle::kLinux, "/data/run1", "/.../data/run1", "/.../data/run1/"},
      {PathStyle::kLinux, "/data/plates/../plates/run1", "/.../plates/run1", "/.../plates/run1/"},
  };
  for (const auto& c : cases) {
    TestPlatform platform(c.style);
    platform.files.AddFolder(c.path);
    EXPECT_EQ(ShortenPath(c.path, false), c.shortened);
    EXPECT_EQ(ShortenPath(c.path, true), c.with_slash);
  }
}

TEST(ShortenPath, NamesAFolderThatIsMissing) {
  TestPlatform platform;
  platform.files.AddFile("/data/file");
  for (const char* path : {"/data/run9", "", "/data/file"}) {
    const Error error = ErrorOf([&] { ShortenPath(path, true); });
    EXPECT_EQ(error.Number(), error_number::kPathNotFound);
    EXPECT_THAT(error.Description(), HasSubstr("\"" + std::string(path) + "\""));
  }
}

TEST(DisplayPath, ShortensTheFolderOfAFile) {
  TestPlatform platform;
  platform.files.AddFile("/data/plates/run1/x.xls");
  EXPECT_EQ(GetDisplayPath("/data/plates/run1/x.xls"), "/.../plates/run1/x.xls");
  EXPECT_EQ(GetDisplayPath("/x.xls"), "/x.xls");  // the file need not exist

  platform.files.Remove("/data/plates/run1");
  EXPECT_EQ(ErrorOf([] { GetDisplayPath("/data/plates/run1/x.xls"); }).Number(),
            error_number::kPathNotFound);
  EXPECT_EQ(ErrorOf([] { GetDisplayPath("x.xls"); }).Number(), error_number::kPathNotFound);
}

TEST(CountFiles, CountsThroughAllSubFolders) {
  TestPlatform platform;
  for (const char* file : {"/d/1", "/d/a/2", "/d/a/b/3", "/d/a/b/4", "/e/5"})
    platform.files.AddFile(file);
  platform.files.AddFolder("/d/empty");
  EXPECT_EQ(CountFiles("/d"), 4);
  EXPECT_EQ(CountFiles("/d/a/"), 3);
  EXPECT_EQ(CountFiles("/d/empty"), 0);
  platform.files.Deny("/d/a/b");
  EXPECT_EQ(ErrorOf([] { CountFiles("/d"); }).Number(), error_number::kPermissionDenied);
}

TEST(FileIsWritable, TellsWithoutATrace) {
  TestPlatform platform;
  platform.files.AddFile("/out/old.xls", "content");
  platform.files.AddFile("/out/in_use.xls", "content");
  platform.files.Fail(FileOperation::kAppend, "/out/in_use.xls", error_number::kPermissionDenied);
  platform.files.Fail(FileOperation::kAppend, "/out/denied.xls", error_number::kPathFileAccess);
  platform.files.AddFolder("/out/folder.xls");
  const struct {
    const char* name;
    bool writable;
  } cases[] = {{"/out/new.xls", true},
               {"/out/old.xls", true},
               {"/out/in_use.xls", false},
               {"/out/denied.xls", false},
               {"/none/x.xls", false},
               {"/out/folder.xls", false},
               {"", false},
               {"/out/", false}};
  const std::size_t before = platform.files.List("/out").size();
  for (const auto& c : cases) EXPECT_EQ(FileIsWritable(c.name), c.writable) << c.name;
  EXPECT_EQ(platform.files.List("/out").size(), before);
  EXPECT_EQ(platform.files.Content("/out/old.xls"), "content");
}

}  // namespace
}  // namespace korvex
