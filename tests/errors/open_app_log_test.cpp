#include "errors/open_app_log.h"

#include <gtest/gtest.h>

#include "errors/clsAppLog.h"
#include "platform/error.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

class OpeningTheErrorLog : public testing::Test {
 protected:
  static Services WithUserFolder(const std::string& folder) {
    Services services = Platform();
    services.user_folder = folder;
    return services;
  }
  // Where a record lands.
  std::string Place() {
    OpenAppLog();
    AppLog().AddText("record", "", false, 0, false);
    EXPECT_EQ(platform.files.Content(AppLog().Filename()), "record");
    return platform.files.AbsolutePath(AppLog().Filename());
  }

  TestPlatform platform;
  InstalledServices installed{WithUserFolder("/home/user/.local/state/korvex")};
};

TEST_F(OpeningTheErrorLog, PrefersThePlaceBesideTheProgram) {
  EXPECT_EQ(Place(), "/opt/korvex/AppErr/KORVEX.LOG");
  EXPECT_FALSE(platform.files.FolderExists("/home/user/.local"));
}

TEST_F(OpeningTheErrorLog, GoesToTheUsersFolderWhereTheFolderCannotBeMade) {
  platform.files.Deny("/opt/korvex/AppErr");
  EXPECT_EQ(Place(), "/home/user/.local/state/korvex/AppErr/KORVEX.LOG");
}

TEST_F(OpeningTheErrorLog, GoesToTheUsersFolderWhereTheFileCannotBeWritten) {
  platform.files.AddFile("/opt/korvex/AppErr/KORVEX.LOG");
  platform.files.Deny("/opt/korvex/AppErr/KORVEX.LOG");
  EXPECT_EQ(Place(), "/home/user/.local/state/korvex/AppErr/KORVEX.LOG");
}

TEST_F(OpeningTheErrorLog, FailsAsTheLastPlaceDid) {
  platform.files.Deny("/opt/korvex/AppErr");
  platform.files.Fail(FileOperation::kCreateFolder, "/home/user/.local", error_number::kDiskFull);
  EXPECT_EQ(ErrorOf([] { OpenAppLog(); }).Number(), error_number::kDiskFull);
  const InstalledServices homeless(WithUserFolder(""));
  EXPECT_EQ(ErrorOf([] { OpenAppLog(); }).Number(), error_number::kPermissionDenied);
}

}  // namespace
}  // namespace korvex
