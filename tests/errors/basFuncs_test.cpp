#include "errors/basFuncs.h"

#include <gmock/gmock.h>

#include <new>

#include "errors/clsAppLog.h"
#include "errors/trap.h"
#include "settings/basSettings.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Reporting : public testing::Test {
 protected:
  Reporting() { AppLog().Filename(AppErrFolder() + "KORVEX.LOG"); }

  const std::string& Log() const { return platform.files.Content("/opt/korvex/AppErr/KORVEX.LOG"); }

  // Reports an error as a trap with these choices does.
  static void ReportPending(bool show, bool write, bool mail,
                            const std::optional<std::string>& message = std::nullopt) {
    try {
      throw Error(61, "Disk full: /out/all.xls", "clsX");
    } catch (const Error&) {
      ReportError("frmMain.Run", message, show, write, true, mail);
    }
  }

  TestPlatform platform;
};

TEST_F(Reporting, GoesToLogUserAndMailAsFarAsIsAskedFor) {
  ReportPending(false, false, false);
  EXPECT_EQ(Log(), "");
  EXPECT_THAT(platform.mail.steps, IsEmpty());
  ReportPending(true, false, false, "Errors during Unload.");
  EXPECT_THAT(platform.dialogs.texts, ElementsAre("Errors during Unload."));

  basSettings::SetErrorEmailAddress("lab@example.org");
  ReportPending(true, true, true);
  for (const char* part :
       {": 61\r\n", ": Disk full: /out/all.xls\r\n", ": clsX\r\n", ": frmMain.Run\r\n"})
    EXPECT_THAT(Log(), HasSubstr(part));
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

TEST_F(Reporting, TakesEveryStepThoughOthersFail) {
  AppLog().CloseFile();
  platform.dialogs.failure = error_number::kOutOfMemory;
  platform.settings.failure = error_number::kPermissionDenied;  // the recipient cannot be read
  platform.mail.failing = {"SignOn", "Compose", "SetSubject", "SetNoteText", "ResolveName", "Send"};
  int pending = 0;
  Trap(
      "a.b", [] { throw Error(57); },
      [&](const TrappedError& error) {
        EXPECT_EQ(ErrorOf([] { ReportPending(true, true, true); }).Number(), 0);
        error.Report();
        pending = PendingError().Number();
      });
  EXPECT_EQ(pending, 57);
  EXPECT_EQ(platform.dialogs.texts.size(), 2u);
  EXPECT_EQ(platform.mail.steps.size(), 7u);
  EXPECT_EQ(platform.mail.steps.back(), "SignOff");
}

TEST_F(Reporting, SurvivesSettingsThatCannotBeRead) {
  const struct {
    const char* stored;
    int failure;
    bool mailed;
  } cases[] = {{"-1", 0, true}, {"0", 0, false}, {"perhaps", 0, false}, {"-1", 70, false}};
  for (const auto& c : cases) {
    platform.mail.steps.clear();
    platform.dialogs.texts.clear();
    platform.settings.failure = 0;
    platform.settings.Save("Main Section", "Send Email on Error", c.stored);
    platform.settings.failure = c.failure;
    Trap("frmMain.Run", [] { throw std::bad_alloc(); });
    EXPECT_THAT(platform.dialogs.texts, ElementsAre(HasSubstr("frmMain.Run"))) << c.stored;
    EXPECT_EQ(!platform.mail.steps.empty(), c.mailed) << c.stored << c.failure;
  }
  EXPECT_THAT(Log(), HasSubstr("Error Number   : 7\r\n"));
  Trap("a.b", [] { throw std::runtime_error("odd"); });
  EXPECT_THAT(Log(), HasSubstr("Error Desc     : odd\r\n"));
}

TEST_F(Reporting, LetsAHandlerPassAnErrorOn) {
  const auto run = [](int number) {
    const auto body = [&] {
      if (number != 0) throw Error(number);
    };
    const auto handler = [](const TrappedError& error) {
      if (!error.IsTold()) error.Report();
      throw Error(error_number::kCannotPerform);
    };
    return ErrorOf([&] { Trap("a.b", body, handler); }).Number();
  };
  EXPECT_EQ(run(0), 0);
  EXPECT_EQ(run(error_number::kCannotPerform), error_number::kCannotPerform);
  EXPECT_THAT(platform.dialogs.texts, IsEmpty());
  EXPECT_EQ(run(error_number::kDiskFull), error_number::kCannotPerform);
  EXPECT_EQ(platform.dialogs.texts.size(), 1u);
}

}  // namespace
}  // namespace korvex
