// Programs that the desktop services start, played by scripts on a PATH of the test's own.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

#include "platform/posix/desktop_shell.h"
#include "platform/posix/process.h"
#include "platform/posix/sendmail_mail.h"
#include "tests/platform/posix/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using std::chrono_literals::operator""ms;

class ProgramsTest : public testing::Test {
 protected:
  ProgramsTest() : former_path_(getenv("PATH")) {
    setenv("PATH", (folder_.Path() + ":" + former_path_).c_str(), 1);
  }
  ~ProgramsTest() override { setenv("PATH", former_path_.c_str(), 1); }

  void PutScript(const std::string& name, const std::string& body) {
    folder_.Put(name, "#!/bin/sh\ncd '" + folder_.Path() + "'\n" + body + "\n", 0755);
  }
  // The scripts make their record visible at once, by renaming it.
  std::string WaitForRecord() {
    for (int i = 0; i < 1000 && access((folder_ / "record").c_str(), F_OK) != 0; ++i) {
      std::this_thread::sleep_for(5ms);
    }
    return Content(folder_ / "record");
  }

  TempFolder folder_;
  std::string former_path_;
};

class SendmailMailTest : public ProgramsTest {
 protected:
  void Compose(const std::string& recipient, const std::string& subject, const std::string& text) {
    mail_.SignOn();
    mail_.Compose();
    mail_.SetSubject(subject);
    mail_.SetNoteText(text);
    mail_.SetPrimaryRecipient(recipient);
  }

  SendmailMail mail_;
};

constexpr char kRecordMessage[] = "{ echo \"$@\"; cat; } > new; mv new record";

TEST_F(SendmailMailTest, HandsTheMessageToSendmail) {
  PutScript("sendmail", kRecordMessage);
  Compose("lab@example.org", "Error in KORVEX", "Err Number   = 53\r\n.\r\nµ");
  mail_.ResolveName();
  mail_.Send();
  mail_.SignOff();
  EXPECT_EQ(Content(folder_ / "record"),
            "-t -i\nTo: lab@example.org\nSubject: Error in KORVEX\nMIME-Version: 1.0\n"
            "Content-Type: text/plain; charset=UTF-8\nContent-Transfer-Encoding: 8bit\n"
            "Auto-Submitted: auto-generated\n\nErr Number   = 53\n.\nµ\n");
}

TEST_F(SendmailMailTest, EncodesSubjectsThatAreNotPlain) {
  PutScript("sendmail", kRecordMessage);
  const std::pair<std::string, const char*> cases[] = {
      {"Größe", "Subject: =?UTF-8?B?R3LDtsOfZQ==?=\n"},
      {"=?x?=", "Subject: =?UTF-8?B?PT94Pz0=?=\n"},
      {"a\r\nBcc: b@c", "Subject: a  Bcc: b@c\n"},
      {std::string(38, 'x') + "ää", "eHh4eHg=?=\n =?UTF-8?B?w6TDpA==?=\n"},
  };
  for (const auto& [subject, header] : cases) {
    Compose("lab", subject, "");
    mail_.Send();
    EXPECT_THAT(Content(folder_ / "record"), HasSubstr(header));
  }
}

TEST_F(SendmailMailTest, RefusesAddressesThatSmuggleHeaderLines) {
  PutScript("sendmail", kRecordMessage);
  for (const char* address : {"a@b\r\nBcc: c@d", "a\nb", "", "  ", "a\tb"}) {
    Compose(address, "s", "t");
    EXPECT_EQ(ErrorOf([&] { mail_.ResolveName(); }).Number(), 5) << address;
    EXPECT_EQ(ErrorOf([&] { mail_.Send(); }).Number(), 5) << address;
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ / "record"));
}

TEST_F(SendmailMailTest, BreaksLinesThatMailSystemsRefuse) {
  PutScript("sendmail", kRecordMessage);
  Compose("lab", "s", std::string(1000, 'x') + "\r\nend");
  mail_.Send();
  EXPECT_THAT(Content(folder_ / "record"), HasSubstr(std::string(100, 'x') + "\nend\n"));
}

TEST_F(SendmailMailTest, DoesNotWaitForASlowOrDeafSendmail) {
  PutScript("sendmail", "exec 0<&-; while [ ! -e go ]; do sleep 0.01; done; echo > record");
  SendmailMail mail(20ms);
  mail.SignOn();
  mail.SetPrimaryRecipient("lab");
  mail.SetNoteText(std::string(100000, 'x'));
  EXPECT_NO_THROW(mail.Send());
  folder_.Put("go", "");
  EXPECT_GT(wait(nullptr), 0) << "it went on by itself";
  EXPECT_TRUE(std::filesystem::exists(folder_ / "record"));
}

TEST_F(SendmailMailTest, TellsWhenSendmailRefuses) {
  PutScript("sendmail", "exit 67");
  Compose("lab", "s", "t");
  EXPECT_EQ(ErrorOf([&] { mail_.Send(); }).Number(), 57);
}

TEST_F(SendmailMailTest, SendsNothingWithoutSigningOn) {
  PutScript("sendmail", kRecordMessage);
  Compose("lab", "s", "t");
  mail_.SignOff();
  EXPECT_NO_THROW(mail_.Send());
  EXPECT_FALSE(std::filesystem::exists(folder_ / "record"));
}

TEST_F(ProgramsTest, ShellOpensADocumentByItsFullPath) {
  PutScript("xdg-open", "{ echo \"$#\"; echo \"$1\"; } > new; mv new record");
  const std::string name = "-a 'b\" $(touch x); *.xls";
  const std::string file = folder_.Put(name, "");
  DesktopShell().Open(file);
  EXPECT_EQ(WaitForRecord(), "1\n" + file + "\n");
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left to be waited for";
}

TEST_F(ProgramsTest, ShellOpensOnlyFilesThatExist) {
  PutScript("xdg-open", "echo \"$1\" > new; mv new record");
  DesktopShell().Open(folder_ / "missing.xls");
  DesktopShell().Open("https://example.org/");
  const std::string log = folder_.Put("KORVEX.LOG", "");
  DesktopShell().OpenInTextEditor(log);
  EXPECT_EQ(WaitForRecord(), log + "\n");
}

TEST_F(ProgramsTest, FindsProgramsOnlyInAbsoluteFolders) {
  PutScript("tool", "");
  folder_.Put("not-executable", "", 0644);
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Path());
  setenv("PATH", ".::/nonexistent", 1);
  EXPECT_EQ(FindProgram("tool"), "");
  EXPECT_EQ(FindProgram("tool", {folder_.Path().c_str()}), folder_ / "tool");
  EXPECT_EQ(FindProgram("not-executable", {folder_.Path().c_str()}), "");
  std::filesystem::current_path(former);
}

}  // namespace
}  // namespace korvex
