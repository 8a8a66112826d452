// What is asked of Windows itself, in its own texts.
#include "platform/windows/windows_desktop.h"

#include <gtest/gtest.h>

#include <utility>

#include "platform/native_platform.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "tests/platform/temp_folder.h"

namespace korvex {
namespace {

TEST(WideText, ConvertsToUtf16AndBack) {
  const std::pair<std::string, std::wstring> texts[] = {
      {"", L""},
      {"Größe 漢 🔬", L"Gr\u00F6\u00DFe \u6F22 \U0001F52C"},
      {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
      {"\xED\xB4\xAC\xED\xA0\xBD", L"\xDD2C\xD83D"},
  };
  for (const auto& [utf8, wide] : texts) {
    EXPECT_EQ(ToWide(utf8), wide) << utf8;
    EXPECT_EQ(FromWide(wide), utf8);
  }
  EXPECT_EQ(ToWide("a\xFF\xC3"), L"a\uFFFD\uFFFD");
}

TEST(WindowsShell, OpensADocumentByItsProgram) {
  const TempFolder folder;
  WindowsShell().Open(folder / "missing.bat");
  WindowsShell().Open(folder.Put("Größe & co.bat", "@echo opened>\"%~dp0record\"\r\n"));
  // What another program writes appears a little later.
  for (int i = 0; i < 1000 && Content(folder / "record") != "opened\r\n"; ++i) Sleep(10);
  EXPECT_EQ(Content(folder / "record"), "opened\r\n");
}

TEST(WindowsShell, ReadsVariablesOfEveryLength) {
  for (const std::size_t length : {0, 1, MAX_PATH - 1, MAX_PATH, 20000}) {
    const std::wstring value(length, L'\xB5');
    SetEnvironmentVariableW(L"KORVEX_TEST", value.c_str());
    EXPECT_EQ(WindowsShell().EnvironmentVariable("KORVEX_TEST"), FromWide(value));
  }
}

TEST(NativePlatform, FindsTheLocalDataOfTheUser) {
  const NativePlatform native;
  wchar_t former[MAX_PATH] = L"";
  GetEnvironmentVariableW(L"LOCALAPPDATA", former, MAX_PATH);
  SetEnvironmentVariableW(L"LOCALAPPDATA", L"C:\\users\\Gr\u00F6\u00DFe");
  EXPECT_EQ(native.Provided().user_folder, "C:\\users\\Größe\\KORVEX");
  SetEnvironmentVariableW(L"LOCALAPPDATA", nullptr);
  EXPECT_TRUE(native.Provided().user_folder.ends_with("\\KORVEX"));
  SetEnvironmentVariableW(L"LOCALAPPDATA", former);
}

}  // namespace
}  // namespace korvex
