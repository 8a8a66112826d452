// The report of a trapped error: a record in the log, a message, an e-mail.
#include <gmock/gmock.h>

#include <new>

#include "errors/basFuncs.h"
#include "errors/clsAppLog.h"
#include "errors/trap.h"
#include "settings/basSettings.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kFile[] = "/opt/korvex/AppErr/KORVEX.LOG";
constexpr char kOwnFile[] = "/home/user/.local/state/korvex/AppErr/KORVEX.LOG";

class ErrorsTest : public testing::Test {
 protected:
  ErrorsTest() { OpenAppLog(); }

  const std::string& Log() const { return platform.files.Content(kFile); }

  // Reports an error as a trap with these choices does.
  static void ReportPending(bool show, bool write, bool mail,
                            const std::optional<std::string>& message = std::nullopt) {
    Trap(
        "unused", [] { throw Error(61, "Disk full: /out/all.xls", "clsX"); },
        [&](const TrappedError&) {
          ReportError("frmMain.Run", message, show, write, true, mail);
          EXPECT_EQ(PendingError().Number(), 61) << "the error is still there for its handler";
        });
  }

  TestPlatform platform;
};

TEST_F(ErrorsTest, AreToldToLogUserAndMailAsFarAsIsAskedFor) {
  ReportPending(false, false, false);
  ReportPending(true, false, false, "Errors during Unload.");
  EXPECT_EQ(Log() + std::to_string(platform.mail.steps.size()), "0");
  EXPECT_THAT(platform.dialogs.texts, ElementsAre("Errors during Unload."));

  basSettings::SetErrorEmailAddress("lab@example.org");
  ReportPending(true, true, true);
  EXPECT_THAT(Log(), HasSubstr(": 61\r\nError Desc     : Disk full: /out/all.xls\r\n"
                               "Error Source   : clsX\r\n"));
  EXPECT_THAT(Log(), HasSubstr("Caught by      : frmMain.Run\r\n"));
  const PlainMessage& shown = platform.dialogs.plain.back();
  EXPECT_EQ(shown.text,
            "An error occurred in procedure \"frmMain.Run\".\r\n\r\n"
            "The Error has been written to a log file.");
  EXPECT_EQ(shown.icon, BoxIcon::kExclamation);
  EXPECT_EQ(shown.cause, "Disk full: /out/all.xls");
  EXPECT_THAT(
      platform.mail.steps,
      ElementsAre("SignOn", "Compose", "SetSubject: Error in KORVEX",
                  "SetNoteText: Err Number   = 61\r\nErr Desc.    = Disk full: /out/all.xls\r\n",
                  "SetPrimaryRecipient: lab@example.org", "ResolveName", "Send", "SignOff"));
}

TEST_F(ErrorsTest, AreReportedInEveryStepThatStillWorks) {
  AppLog().CloseFile();
  platform.dialogs.failure = error_number::kOutOfMemory;
  platform.settings.failure = error_number::kPermissionDenied;  // the recipient cannot be read
  platform.mail.failing = {"SignOn", "Compose", "SetSubject", "SetNoteText", "ResolveName", "Send"};
  ReportPending(true, true, true);
  EXPECT_EQ(platform.dialogs.texts.size(), 1u);
  EXPECT_EQ(platform.mail.steps.size(), 7u);
  EXPECT_EQ(platform.mail.steps.back(), "SignOff");
}

TEST_F(ErrorsTest, AreNotMailedWhereNothingCanBe) {
  platform.mail.obstacle = "Nothing is mailed: no mail program.";
  for (int i = 0; i < 3; ++i) ReportPending(false, false, true);
  EXPECT_EQ(platform.mail.steps.size(), 0u);
  EXPECT_EQ(Log(), "Nothing is mailed: no mail program.\r\nTime: 05/03/2004 14:07:09\r\n\r\n")
      << "once";
}

TEST_F(ErrorsTest, AreMailedWhenTheSettingsCanBeReadAndAskForIt) {
  const struct {
    const char* stored;
    int failure;
    bool is_mailed, is_unreadable;
  } cases[] = {{"-1", 0, true, false},       {"0", 0, false, false},   {"perhaps", 0, false, true},
               {"perhaps", 0, false, false}, {"-1", 70, false, false}, {"1", 0, true, false},
               {"99999", 0, false, true}};
  for (const auto& [stored, failure, is_mailed, is_unreadable] : cases) {
    platform.mail.steps.clear();
    platform.dialogs.texts.clear();
    platform.settings.failure = 0;
    platform.settings.Save("Main Section", "Send Email on Error", stored);
    platform.settings.failure = failure;
    Trap("frmMain.Run", [] { throw std::bad_alloc(); });
    ASSERT_EQ(platform.dialogs.texts.size(), is_unreadable ? 2u : 1u) << stored;
    EXPECT_THAT(platform.dialogs.texts.front(), HasSubstr("frmMain.Run"));
    if (is_unreadable) {
      EXPECT_EQ(platform.dialogs.texts.back(), "This error was not mailed.");
      EXPECT_THAT(platform.dialogs.plain.back().cause, HasSubstr("\"Send Email on Error\""));
    }
    EXPECT_EQ(!platform.mail.steps.empty(), is_mailed) << stored << failure;
  }
  EXPECT_THAT(Log(), HasSubstr("Error Number   : 7\r\n"));
  Trap("a.b", [] { throw std::runtime_error("odd"); });
  EXPECT_THAT(Log(), HasSubstr("Error Desc     : odd\r\n"));
}

TEST_F(ErrorsTest, AreLoggedWithEveryPartAndRaisedAgainWhenAsked) {
  const Error raised = ErrorOf([] {
    AppLog().Error("Work", 53, "not found", "disk", "try again", "frmMain.Run", true, true, true);
  });
  EXPECT_EQ(raised.Number(), 53);
  EXPECT_EQ(raised.Description() + raised.Source(), "not founddisk");
  // What is left out comes from the pending error; an empty text is not left out.
  Trap(
      "unused", [] { throw Error(61, "no room", "clsX"); },
      [](const TrappedError&) {
        AppLog().Error({}, 0, {}, {}, "", {}, false, false, false);
        AppLog().Error({}, 5, "", "", "", {}, false, false, false);
      });
  EXPECT_EQ(Log(),
            "\r\n<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<ERROR>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>\r\n"
            "Error Number   : 53\r\nError Desc     : not found\r\nError Source   : disk\r\n"
            "Date           : 05/03/2004 14:07:09\r\nFunction Name  : Work\r\n"
            "Caught by      : frmMain.Run\r\nAdditional Data: try again\r\n"
            "==================================================================\r\n\r\n"
            "\r\nError Number   : 61\r\nError Desc     : no room\r\nError Source   : clsX\r\n\r\n"
            "\r\nError Number   : 5\r\nError Desc     : \r\nError Source   : \r\n\r\n");
}

TEST_F(ErrorsTest, LogTakesFreeTextInTheSingleByteCodePage) {
  AppLog().AddText("5 µM – λ", "", false, -1, true);
  AppLog().AddText("a", "", true, 1, false);
  AppLog().AddText("b", "more", true, 2, true);
  EXPECT_EQ(Log(),
            "\t5 \xB5M \x96 ?"
            "a\r\nTime: 05/03/2004 14:07:09\r\n"
            "\tb\r\n\tTime: 05/03/2004 14:07:09\r\n\tAdditional Data: more\r\n\r\n");
}

TEST_F(ErrorsTest, LogGrowsThroughReopeningAndIsLetGoForAnother) {
  const auto add = [](const char* text) {
    return ErrorOf([&] { AppLog().AddText(text, "", false, 1, false); }).Number();
  };
  EXPECT_EQ(add("a"), 0);
  AppLog().CloseFile();
  EXPECT_EQ(add("lost"), error_number::kObjectNotSet);
  EXPECT_EQ(ErrorOf([] { AppLog().Filename("/none/KORVEX.LOG"); }).Number(),
            error_number::kPathNotFound);
  EXPECT_EQ(AppLog().Filename(), "/none/KORVEX.LOG");
  EXPECT_EQ(add("lost"), error_number::kObjectNotSet);
  AppLog().Filename(kFile);
  platform.files.LimitSpace(3);
  EXPECT_EQ(add("record"), error_number::kDiskFull);
  EXPECT_EQ(Log(), "a\r\nrec");
  AppLog().NotePad();
  EXPECT_THAT(platform.shell.edited, ElementsAre(kFile));
}

TEST_F(ErrorsTest, LogLiesBesideTheProgramOrElseInTheUsersOwnFolder) {
  const auto place = [](const std::string& user_folder) {
    Services services = Platform();
    services.user_folder = user_folder;
    const InstalledServices installed(services);
    OpenAppLog();
    return Platform().files->AbsolutePath(AppLog().Filename());
  };
  EXPECT_EQ(place("/home/user/.local/state/korvex"), kFile);
  EXPECT_FALSE(platform.files.FolderExists("/home/user/.local"));
  platform.files.Deny(kFile);
  platform.files.Fail(FileOperation::kCreateFolder, "/home/user/.local", error_number::kDiskFull);
  EXPECT_EQ(ErrorOf([&] { place("/home/user/.local/state/korvex"); }).Number(),
            error_number::kDiskFull);
  platform.files.AddFolder("/home/user/.local");
  EXPECT_EQ(place("/home/user/.local/state/korvex"), kOwnFile);
  EXPECT_EQ(ErrorOf([&] { place(""); }).Number(), error_number::kPermissionDenied);

  platform.SetProgramFolder("/none/bin");
  EXPECT_EQ(ErrorOf([] { AppErrFolder(); }).Number(), error_number::kPathNotFound)
      << "one level only";
}

}  // namespace
}  // namespace korvex
