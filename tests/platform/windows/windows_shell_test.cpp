#include "platform/windows/windows_shell.h"

#include <gtest/gtest.h>

#include "tests/platform/windows/temp_folder.h"

namespace korvex {
namespace {

// What another program writes appears a little later.
std::string WaitFor(const std::string& file, const std::string& content) {
  for (int i = 0; i < 1000 && Content(file) != content; ++i) Sleep(10);
  return Content(file);
}

TEST(WindowsShell, OpensADocumentByItsProgram) {
  const TempFolder folder;
  WindowsShell().Open(folder / "missing.bat");
  WindowsShell().Open(
      folder.Put("Gr\xC3\xB6\xC3\x9F"
                 "e & co.bat",
                 "@echo opened>\"%~dp0record\"\r\n"));
  EXPECT_EQ(WaitFor(folder / "record", "opened\r\n"), "opened\r\n");
}

TEST(WindowsShell, ReadsVariablesOfEveryLength) {
  const std::wstring values[] = {L"", L"x", std::wstring(MAX_PATH - 1, L'x'),
                                 std::wstring(MAX_PATH, L'x'), std::wstring(20000, L'\xB5')};
  for (const std::wstring& value : values) {
    SetEnvironmentVariableW(L"KORVEX_TEST", value.c_str());
    EXPECT_EQ(WindowsShell().EnvironmentVariable("KORVEX_TEST"), FromWide(value));
  }
  SetEnvironmentVariableW(L"KORVEX_TEST", nullptr);
  EXPECT_EQ(WindowsShell().EnvironmentVariable("KORVEX_TEST"), "");
}

}  // namespace
}  // namespace korvex
