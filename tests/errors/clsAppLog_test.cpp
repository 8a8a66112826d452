#include "errors/clsAppLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/error.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

constexpr char kFile[] = "/log/KORVEX.LOG";

class AppLogFile : public testing::Test {
 protected:
  AppLogFile() {
    platform.files.AddFolder("/log");
    platform.clock.Set(2004, 12, 31, 23, 5, 9);
    log.Filename(kFile);
  }

  const std::string& Content() const { return platform.files.Content(kFile); }

  TestPlatform platform;
  clsAppLog log;
};

TEST_F(AppLogFile, HoldsARecordOfEveryPart) {
  log.Error("Work", 53, "not found", "disk", "try again", "frmMain.Run", true, true, false);
  EXPECT_EQ(Content(),
            "\r\n"
            "<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<ERROR>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>\r\n"
            "Error Number   : 53\r\n"
            "Error Desc     : not found\r\n"
            "Error Source   : disk\r\n"
            "Date           : 31/12/2004 23:05:09\r\n"
            "Function Name  : Work\r\n"
            "Caught by      : frmMain.Run\r\n"
            "Additional Data: try again\r\n"
            "==================================================================\r\n"
            "\r\n");
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

TEST_F(AppLogFile, RaisesTheErrorItRecordedWhenAsked) {
  const Error raised =
      ErrorOf([&] { log.Error({}, 57, "device", "clsX", "", {}, false, false, true); });
  EXPECT_EQ(raised.Number(), 57);
  EXPECT_EQ(raised.Description(), "device");
  EXPECT_EQ(raised.Source(), "clsX");
  EXPECT_THAT(Content(), testing::HasSubstr("57"));
}

TEST_F(AppLogFile, TakesFreeText) {
  const struct {
    const char* more_info;
    bool insert_time;
    int end_crlf;
    bool indent;
    const char* written;
  } cases[] = {
      {"", false, 0, false, "text"},
      {"", false, -1, true, "\ttext"},
      {"", true, 1, false, "text\r\nTime: 31/12/2004 23:05:09\r\n"},
      {"more", true, 2, true,
       "\ttext\r\n\tTime: 31/12/2004 23:05:09\r\n\tAdditional Data: more\r\n\r\n"},
  };
  std::string expected;
  for (const auto& c : cases) {
    log.AddText("text", c.more_info, c.insert_time, c.end_crlf, c.indent);
    expected += c.written;
    EXPECT_EQ(Content(), expected);
  }
}

TEST_F(AppLogFile, IsWrittenInTheSingleByteCodePage) {
  log.AddText("5 µM – λ", "", false, 0, false);
  EXPECT_EQ(Content(), "5 \xB5M \x96 ?");
}

TEST_F(AppLogFile, GrowsThroughReopening) {
  log.AddText("a", "", false, 1, false);
  log.CloseFile();
  EXPECT_EQ(ErrorOf([&] { log.AddText("lost", "", false, 0, false); }).Number(),
            error_number::kObjectNotSet);
  log.Filename(kFile);
  log.AddText("b", "", false, 1, false);
  EXPECT_EQ(Content(), "a\r\nb\r\n");
}

TEST_F(AppLogFile, StaysClosedWhenTheNewFileCannotBeOpened) {
  EXPECT_EQ(ErrorOf([&] { log.Filename("/none/KORVEX.LOG"); }).Number(),
            error_number::kPathNotFound);
  EXPECT_EQ(log.Filename(), "/none/KORVEX.LOG");
  EXPECT_EQ(ErrorOf([&] { log.AddText("x", "", false, 0, false); }).Number(),
            error_number::kObjectNotSet);
  EXPECT_EQ(Content(), "");  // the former file is let go
}

TEST_F(AppLogFile, PassesOnAFullDisk) {
  platform.files.LimitSpace(3);
  EXPECT_EQ(ErrorOf([&] { log.AddText("record", "", false, 0, false); }).Number(),
            error_number::kDiskFull);
  EXPECT_EQ(Content(), "rec");
}

TEST_F(AppLogFile, OpensInTheTextEditor) {
  log.NotePad();
  EXPECT_THAT(platform.shell.edited, testing::ElementsAre(kFile));
}

}  // namespace
}  // namespace korvex
