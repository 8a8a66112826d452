// Programs that the desktop services start, played by scripts on a PATH of the test's own.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "platform/posix/posix_desktop.h"
#include "platform/posix/process.h"
#include "platform/posix/sendmail_mail.h"
#include "tests/platform/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::HasSubstr;
using std::chrono_literals::operator""ms;

class ProgramsTest : public testing::Test {
 protected:
  ProgramsTest() : former_path_(getenv("PATH")) {
    setenv("PATH", (folder_.Path() + ":" + former_path_).c_str(), 1);
  }
  ~ProgramsTest() override { setenv("PATH", former_path_.c_str(), 1); }

  void PutScript(const std::string& name, const std::string& body) {
    folder_.Put(name, "#!/bin/sh\ncd '" + folder_.Path() + "'\n" + body + "\n");
    std::filesystem::permissions(folder_ / name, std::filesystem::perms::owner_all);
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
  // What a recording sendmail is handed.
  std::string Send(const std::string& recipient, const std::string& subject,
                   const std::string& text) {
    mail_.SignOn();
    mail_.Compose();
    mail_.SetSubject(subject);
    mail_.SetNoteText(text);
    mail_.SetPrimaryRecipient(recipient);
    mail_.Send();
    return Content(folder_ / "record");
  }

  SendmailMail mail_;
};

TEST_F(SendmailMailTest, HandsTheMessageToSendmail) {
  mail_.Send();  // to nobody, before anyone has signed on
  PutScript("sendmail", "{ echo \"$@\"; cat; } > new; mv new record");
  const std::string long_line(1000, 'x');
  EXPECT_EQ(
      Send("lab@example.org", "Error in KORVEX", "Err Number   = 53\r\n.\r\nµ\r\n" + long_line),
      "-t -i\nTo: lab@example.org\nSubject: Error in KORVEX\nMIME-Version: 1.0\n"
      "Content-Type: text/plain; charset=UTF-8\nContent-Transfer-Encoding: 8bit\n"
      "Auto-Submitted: auto-generated\n\nErr Number   = 53\n.\nµ\n" +
          long_line.substr(100) + "\n" + long_line.substr(900) + "\n");
  const std::pair<std::string, const char*> subjects[] = {
      {"Größe", "Subject: =?UTF-8?B?R3LDtsOfZQ==?=\n"},
      {"=?x?=", "Subject: =?UTF-8?B?PT94Pz0=?=\n"},
      {"a\r\nBcc: b@c", "Subject: a  Bcc: b@c\n"},
      {std::string(38, 'x') + "ää", "eHh4eHg=?=\n =?UTF-8?B?w6TDpA==?=\n"},
  };
  for (const auto& [subject, header] : subjects) {
    EXPECT_THAT(Send("lab", subject, ""), HasSubstr(header));
  }
}

TEST_F(SendmailMailTest, RefusesAddressesThatSmuggleHeaderLines) {
  PutScript("sendmail", "exit 67");
  for (const char* address : {"a@b\r\nBcc: c@d", "a\nb", "", "  "}) {
    EXPECT_EQ(ErrorOf([&] { Send(address, "s", "t"); }).Number(), 5) << address;
    EXPECT_EQ(ErrorOf([&] { mail_.ResolveName(); }).Number(), 5) << address;
  }
  EXPECT_EQ(ErrorOf([&] { Send("lab", "s", "t"); }).Number(), 57) << "sendmail refuses";
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

TEST_F(ProgramsTest, ShellOpensADocumentThatExistsByItsFullPath) {
  PutScript("xdg-open", "{ echo \"$#\"; echo \"$1\"; } > new; mv new record");
  DesktopShell().Open(folder_ / "missing.xls");
  DesktopShell().Open("https://example.org/");
  const std::string file = folder_.Put("-a 'b\" $(touch x); *.xls", "");
  DesktopShell().Open(file);
  EXPECT_EQ(WaitForRecord(), "1\n" + file + "\n");
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left to be waited for";
}

TEST_F(ProgramsTest, FindsProgramsOnlyInAbsoluteFolders) {
  PutScript("tool", "");
  folder_.Put("not-executable", "");
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
