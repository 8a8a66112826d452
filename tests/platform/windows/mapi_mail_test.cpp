#include "platform/windows/mapi_mail.h"

#include <gmock/gmock.h>

#include "platform/native_platform.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "tests/platform/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::HasSubstr;
using testing::Not;

class MapiMailTest : public testing::Test {
 protected:
  MapiMailTest() {
    SetEnvironmentVariableW(L"RECORDING_MAPI", ToWide(folder_ / "record").c_str());
    Refuse(nullptr);
  }
  ~MapiMailTest() override { Refuse(nullptr); }

  static void Refuse(const wchar_t* function) {
    SetEnvironmentVariableW(L"RECORDING_MAPI_REFUSES", function);
  }
  std::string Record() const { return Content(folder_ / "record"); }
  void Write(const std::string& recipient, const std::string& subject, const std::string& text) {
    mail_.Compose();
    mail_.SetSubject(subject);
    mail_.SetNoteText(text);
    mail_.SetPrimaryRecipient(recipient);
  }

  TempFolder folder_;
  // By its path: the mail program of the machine must not be reached.
  const std::string library_ = NativePlatform().Provided().program_folder + "\\recording_mapi.dll";
  MapiMail mail_{library_};
};

TEST_F(MapiMailTest, HandsTheMessageToTheMailProgramWithoutDialogs) {
  mail_.SignOn();
  Write("lab@example.org", "Error in KORVEX", "Err Number   = 53\r\n");
  mail_.ResolveName();
  mail_.Send();
  mail_.SignOff();
  EXPECT_EQ(Record(),
            "MAPILogon (null) flags=0\n"
            "MAPIResolveName lab@example.org flags=0\n"
            "MAPISendMail flags=0\n"
            "To (1): The Laboratory <SMTP:lab@example.org>\n"
            "Subject: Error in KORVEX\n"
            "Err Number   = 53\r\n\n"
            "MAPIFreeBuffer\n"
            "MAPILogoff\n");
}

TEST_F(MapiMailTest, SendsInTheCodePageOfTheMachineToANameThatIsNotResolved) {
  mail_.SignOn();
  Refuse(L"MAPIResolveName");
  Write("lab", "µ", "板");
  EXPECT_EQ(ErrorOf([&] { mail_.ResolveName(); }).Number(), 57);
  mail_.Send();
  char micro[8]{};
  WideCharToMultiByte(CP_ACP, 0, L"\xB5", 1, micro, sizeof micro, nullptr, nullptr);
  EXPECT_THAT(Record(), HasSubstr("To (1): lab <(null)>\nSubject: " + std::string(micro) + "\n"));
  EXPECT_TRUE(GetACP() == CP_UTF8 || Record().ends_with("\n?\n")) << Record();
}

TEST_F(MapiMailTest, TellsWhichStepTheMailProgramRefuses) {
  const std::pair<const wchar_t*, std::string> cases[] = {
      {L"MAPILogon", "Cannot sign on to the mail program"},
      {L"MAPIResolveName", "Cannot find the e-mail address lab"},
      {L"MAPISendMail", "Cannot send the e-mail message"},
      {L"MAPILogoff", "Cannot sign off from the mail program"},
  };
  for (const auto& [function, text] : cases) {
    Refuse(function);
    const Error error = ErrorOf([&] {
      mail_.SignOn();
      Write("lab", "s", "t");
      mail_.ResolveName();
      mail_.Send();
      mail_.SignOff();
    });
    EXPECT_EQ(error.Number(), 57);
    EXPECT_THAT(error.Description(), HasSubstr(text));
  }
}

// A key of the registry, for the time of a test.
struct TestKey {
  ~TestKey() { RegDeleteTreeW(HKEY_CURRENT_USER, name.c_str()); }
  void Put(const std::wstring& below, const wchar_t* value, const std::wstring& text) const {
    RegSetKeyValueW(HKEY_CURRENT_USER, (name + below).c_str(), value, REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  }

  std::wstring name = L"Software\\KORVEX test";
};

TEST_F(MapiMailTest, IsNotTriedWithoutAMailProgramOfThisKind) {
  const TestKey clients;
  EXPECT_THAT(MapiObstacle(clients.name), HasSubstr("no mail program"));
  clients.Put(L"", nullptr, L"Post");
  EXPECT_THAT(MapiObstacle(clients.name), HasSubstr("does not take messages"));
  const std::pair<std::wstring, const char*> libraries[] = {
      {ToWide(library_), ""},
      {L"kernel32.dll", ""},
      {L"C:\\windows\\syswow64\\kernel32.dll", "other processors"},
      {L"C:\\none.dll", "is not there"},
      {ToWide(folder_.Put("text.dll", "no library")), "other processors"}};
  for (const auto& [library, obstacle] : libraries) {
    clients.Put(L"\\Post", L"DLLPath", library);
    EXPECT_THAT(MapiObstacle(clients.name), HasSubstr(obstacle)) << FromWide(library);
    EXPECT_EQ(MapiObstacle(clients.name).empty(), *obstacle == 0) << FromWide(library);
  }
  // A process without a desktop, as services are.
  const HWINSTA former = GetProcessWindowStation();
  const HWINSTA hidden = CreateWindowStationW(nullptr, 0, WINSTA_ALL_ACCESS, nullptr);
  SetProcessWindowStation(hidden);
  EXPECT_THAT(MapiObstacle(clients.name), HasSubstr("without a desktop"));
  SetProcessWindowStation(former);
  CloseWindowStation(hidden);
}

TEST_F(MapiMailTest, RefusesEmptyAndMultiLineAddresses) {
  mail_.SignOn();
  for (const char* address : {"", "  ", "a@b\r\nBcc: c@d"}) {
    Write(address, "s", "t");
    EXPECT_EQ(ErrorOf([&] { mail_.ResolveName(); }).Number(), 5) << address;
    EXPECT_EQ(ErrorOf([&] { mail_.Send(); }).Number(), 5) << address;
  }
  EXPECT_THAT(Record(), Not(HasSubstr("MAPISendMail")));
}

TEST_F(MapiMailTest, SendsNothingWithoutASessionAndLeavesNoneBehind) {
  mail_.SetPrimaryRecipient("lab");
  EXPECT_EQ(ErrorOf([&] { mail_.ResolveName(); }).Number(), 68);
  EXPECT_EQ(ErrorOf([&] { mail_.Send(); }).Number(), 68);
  EXPECT_NO_THROW(mail_.SignOff());
  EXPECT_EQ(Record(), "");
  {
    MapiMail mail(library_);
    mail.SignOn();
    mail.SetPrimaryRecipient("lab");
    mail.ResolveName();
  }
  EXPECT_THAT(Record(), HasSubstr("MAPIFreeBuffer\nMAPILogoff\n")) << "when it is destroyed";
  for (const char* library : {"no such library.dll", "kernel32.dll"}) {
    const Error error = ErrorOf([&] { MapiMail(library).SignOn(); });
    EXPECT_EQ(error.Number(), 68);
    EXPECT_THAT(error.Description(), HasSubstr(library));
  }
}

}  // namespace
}  // namespace korvex
