// The installed spreadsheet application as a process of its own, which COM starts.

#include "automation/installed_spreadsheet.h"

#include <gmock/gmock.h>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_handle.h"
#include "structure/basFuncs_workbooks.h"
#include "tests/platform/temp_folder.h"
#include "tests/support/errors.h"
#include "text/text.h"

namespace korvex {
namespace {

using testing::HasSubstr;

constexpr DWORD kLongestWait = 20'000;  // milliseconds

// Registers the scripted application, which lies beside the tests, under names of this process.
// Wine looks for the names of programs only among those of the whole machine.
class InstalledSpreadsheetTest : public testing::Test {
 protected:
  ~InstalledSpreadsheetTest() override {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ToWide(Key(program_id)).c_str());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ToWide(Key("CLSID\\" + class_id)).c_str());
  }

  static std::string Key(const std::string& name) { return "Software\\Classes\\" + name; }
  static void SetKey(const std::string& key, const std::string& value) {
    const std::wstring text = ToWide(value);
    ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, ToWide(Key(key)).c_str(), nullptr, REG_SZ,
                              text.c_str(), static_cast<DWORD>((text.size() + 1) * 2)),
              ERROR_SUCCESS);
  }
  void Register(const std::string& dies_at = "") {
    wchar_t own[MAX_PATH];
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    std::string server = FromWide(own);
    server = server.substr(0, server.rfind('\\')) + "\\spreadsheet_server.exe";
    std::string command = "\"" + server + "\" " + class_id + " \"" + log + "\"";
    if (!dies_at.empty()) command += " \"" + dies_at + "\"";
    SetKey(program_id + "\\CLSID", class_id);
    SetKey("CLSID\\" + class_id + "\\LocalServer32", command);
  }
  std::vector<std::string> Log() const { return Split(TrimBlanks(Content(log), "\n"), "\n"); }
  // The process that the log tells of.
  Handle Server() const {
    return Handle(OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(std::stoul(Log().front()))));
  }

  TempFolder folder;
  WindowsFileSystem files;
  const std::string log = folder / "calls.log";
  const std::string program_id = "KorvexTest.Spreadsheet." + std::to_string(GetCurrentProcessId());
  const std::string class_id = "{7B1C2A60-5D0E-4F7B-9C1F-0000" +
                               std::to_string(10'000'000 + GetCurrentProcessId() % 10'000'000) +
                               "}";
};

TEST_F(InstalledSpreadsheetTest, IsInstalledWhenItsNameIsRegistered) {
  EXPECT_FALSE(InstalledSpreadsheet::IsInstalled(program_id));
  InstalledSpreadsheet spreadsheet(files, program_id);
  EXPECT_EQ(ErrorOf([&] { spreadsheet.CreateApplication(); }).Number(),
            error_number::kNoSuchApplication);
  Register();
  EXPECT_TRUE(InstalledSpreadsheet::IsInstalled(program_id));
}

TEST_F(InstalledSpreadsheetTest, StartsAnewAfterTheApplicationHasDied) {
  Register("Worksheet.Index");
  InstalledSpreadsheet spreadsheet(files, program_id);
  std::unique_ptr<Application> application = spreadsheet.CreateApplication();
  Worksheet& sheet = application->AddWorkbook("out.xls").Worksheets(1);
  const Error error = ErrorOf([&] { sheet.Index(); });
  EXPECT_EQ(error.Number(), error_number::kAutomation);
  EXPECT_THAT(error.Description(), HasSubstr("spreadsheet application has ended"));
  EXPECT_THAT(ErrorOf([&] { sheet.SetName("x"); }).Description(), HasSubstr("has ended"));
  QuitExcel(application);

  files.DeleteFile(log);
  Register();
  application = spreadsheet.CreateApplication();
  EXPECT_EQ(application->AddWorkbook("out.xls").Worksheets(1).Index(), 1);
  const Handle server = Server();
  application.reset();
  EXPECT_EQ(WaitForSingleObject(server.Get(), kLongestWait), WAIT_OBJECT_0);
}

}  // namespace
}  // namespace korvex
