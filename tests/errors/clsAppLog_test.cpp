#include "errors/clsAppLog.h"

#include <gmock/gmock.h>

#include "errors/basFuncs.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

constexpr char kFile[] = "/log/KORVEX.LOG";

class AppLogFile : public testing::Test {
 protected:
  AppLogFile() {
    platform.files.AddFolder("/log");
    log.Filename(kFile);
  }

  const std::string& Content() const { return platform.files.Content(kFile); }

  TestPlatform platform;
  clsAppLog log;
};

TEST_F(AppLogFile, HoldsARecordOfEveryPartAndRaisesTheErrorWhenAsked) {
  const Error raised = ErrorOf([&] {
    log.Error("Work", 53, "not found", "disk", "try again", "frmMain.Run", true, true, true);
  });
  EXPECT_EQ(raised.Number(), 53);
  EXPECT_EQ(raised.Description() + raised.Source(), "not founddisk");
  EXPECT_EQ(Content(),
            "\r\n<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<ERROR>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>\r\n"
            "Error Number   : 53\r\nError Desc     : not found\r\nError Source   : disk\r\n"
            "Date           : 05/03/2004 14:07:09\r\nFunction Name  : Work\r\n"
            "Caught by      : frmMain.Run\r\nAdditional Data: try again\r\n"
            "==================================================================\r\n\r\n");
}

TEST_F(AppLogFile, TakesWhatIsLeftOutFromThePendingError) {
  log.Error({}, 0, {}, {}, "", {}, false, false, false);
  try {
    throw Error(61, "no room", "clsX");
  } catch (const Error&) {
    log.Error({}, 0, {}, {}, "", {}, false, false, false);
    log.Error({}, 5, "", "", "", {}, false, false, false);
  }
  EXPECT_EQ(Content(),
            "\r\nError Number   : 0\r\nError Desc     : \r\nError Source   : \r\n\r\n"
            "\r\nError Number   : 61\r\nError Desc     : no room\r\nError Source   : clsX\r\n\r\n"
            "\r\nError Number   : 5\r\nError Desc     : \r\nError Source   : \r\n\r\n");
}

TEST_F(AppLogFile, TakesFreeTextInTheSingleByteCodePage) {
  const struct {
    const char* more_info;
    bool insert_time;
    int end_crlf;
    bool indent;
    const char* written;
  } cases[] = {
      {"", false, -1, true, "\t5 \xB5M \x96 ?"},
      {"", true, 1, false, "5 \xB5M \x96 ?\r\nTime: 05/03/2004 14:07:09\r\n"},
      {"more", true, 2, true,
       "\t5 \xB5M \x96 ?\r\n\tTime: 05/03/2004 14:07:09\r\n\tAdditional Data: more\r\n\r\n"},
  };
  std::string expected;
  for (const auto& c : cases) {
    log.AddText("5 µM – λ", c.more_info, c.insert_time, c.end_crlf, c.indent);
    expected += c.written;
    EXPECT_EQ(Content(), expected);
  }
}

TEST_F(AppLogFile, GrowsThroughReopeningAndIsLetGoForAnother) {
  const auto add = [&](const char* text) {
    return ErrorOf([&] { log.AddText(text, "", false, 1, false); }).Number();
  };
  EXPECT_EQ(add("a"), 0);
  log.CloseFile();
  EXPECT_EQ(add("lost"), error_number::kObjectNotSet);
  log.Filename(kFile);
  EXPECT_EQ(add("b"), 0);
  EXPECT_EQ(ErrorOf([&] { log.Filename("/none/KORVEX.LOG"); }).Number(),
            error_number::kPathNotFound);
  EXPECT_EQ(log.Filename(), "/none/KORVEX.LOG");
  EXPECT_EQ(add("lost"), error_number::kObjectNotSet);
  log.Filename(kFile);
  platform.files.LimitSpace(3);
  EXPECT_EQ(add("record"), error_number::kDiskFull);
  EXPECT_EQ(Content(), "a\r\nb\r\nrec");
  log.NotePad();
  EXPECT_THAT(platform.shell.edited, testing::ElementsAre(kFile));
}

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
  platform.files.Deny("/opt/korvex/AppErr/KORVEX.LOG");
  EXPECT_EQ(Place(), "/home/user/.local/state/korvex/AppErr/KORVEX.LOG");
}

TEST_F(OpeningTheErrorLog, GoesToTheUsersFolderOrFailsAsThatDid) {
  platform.files.Deny("/opt/korvex/AppErr");
  platform.files.Fail(FileOperation::kCreateFolder, "/home/user/.local", error_number::kDiskFull);
  EXPECT_EQ(ErrorOf([] { OpenAppLog(); }).Number(), error_number::kDiskFull);
  platform.files.AddFolder("/home/user/.local");
  EXPECT_EQ(Place(), "/home/user/.local/state/korvex/AppErr/KORVEX.LOG");
  const InstalledServices homeless(WithUserFolder(""));
  EXPECT_EQ(ErrorOf([] { OpenAppLog(); }).Number(), error_number::kPermissionDenied);
}

TEST(AppErrFolder, LiesBesideTheProgramAndIsCreatedOneLevelDeep) {
  TestPlatform platform(PathStyle::kWindows);
  EXPECT_EQ(AppErrFolder(), "C:\\KORVEX\\bin\\..\\AppErr\\");
  EXPECT_TRUE(platform.files.FolderExists("C:\\KORVEX\\AppErr"));
  platform.files.Deny("C:\\KORVEX\\AppErr");
  EXPECT_EQ(AppErrFolder(), "C:\\KORVEX\\bin\\..\\AppErr\\") << "it exists: nothing more is asked";
  platform.SetProgramFolder("E:\\none\\bin");
  EXPECT_EQ(ErrorOf([] { AppErrFolder(); }).Number(), error_number::kPathNotFound);
}

}  // namespace
}  // namespace korvex
