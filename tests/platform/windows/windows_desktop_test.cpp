// The registry, the shell and the window system of Windows.
#include "platform/windows/windows_desktop.h"

#include <gtest/gtest.h>

#include <utility>

#include "platform/native_platform.h"
#include "platform/windows/registry_settings_store.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "tests/platform/settings_store_contract.h"
#include "tests/platform/temp_folder.h"

// After the header of the system, which it needs.
#include <shlobj.h>

namespace korvex {
namespace {

TEST(Desktop, IsThereWhereAUserIsLoggedOn) {
  EXPECT_TRUE(HasDesktop());
  const HWINSTA users = GetProcessWindowStation();
  const HWINSTA services = CreateWindowStationW(L"KorvexTest", 0, WINSTA_ALL_ACCESS, nullptr);
  ASSERT_TRUE(SetProcessWindowStation(services));
  EXPECT_FALSE(HasDesktop());
  SetProcessWindowStation(users);
  CloseWindowStation(services);
}

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
  const std::wstring former = ToWide(WindowsShell().EnvironmentVariable("LOCALAPPDATA"));
  SetEnvironmentVariableW(L"LOCALAPPDATA", L"C:\\users\\Gr\u00F6\u00DFe");
  EXPECT_EQ(native.Provided().user_folder, "C:\\users\\Größe\\KORVEX");
  EXPECT_EQ(native.Provided().cache_folder, native.Provided().user_folder);
  SetEnvironmentVariableW(L"LOCALAPPDATA", nullptr);
  EXPECT_TRUE(native.Provided().user_folder.ends_with("\\KORVEX"));
  SetEnvironmentVariableW(L"LOCALAPPDATA", former.c_str());
}

TEST(RegistrySettingsStore, IsASettingsStoreOfTextsOnly) {
  const std::string key = "Software\\KORVEX tests\\" + std::to_string(GetCurrentProcessId());
  RegistrySettingsStore store(key);
  RegistrySettingsStore other(key);
  ExpectSettingsStore(store, other);

  const DWORD number = 7;
  RegSetKeyValueW(HKEY_CURRENT_USER, ToWide(key + "\\S").c_str(), L"k", REG_DWORD, &number,
                  sizeof number);
  EXPECT_EQ(ErrorOf([&] { store.Get("S", "k"); }).Number(), 75);
  RegDeleteTreeW(HKEY_CURRENT_USER, ToWide(key).c_str());
}

constexpr UINT kAbsent = static_cast<UINT>(-1);
constexpr UINT kUnusedClose = static_cast<UINT>(-10);
constexpr wchar_t kDialogClass[] = L"#32770";

class WindowsWindowSystemTest : public testing::Test {
 protected:
  ~WindowsWindowSystemTest() override { DestroyWindow(window_); }

  UINT StateOf(UINT item) const {
    const UINT state = GetMenuState(GetSystemMenu(window_, FALSE), item, MF_BYCOMMAND);
    return state == kAbsent ? kAbsent : state & MFS_GRAYED;
  }

  HWND window_ = CreateWindowExW(0, L"STATIC", L"window", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                 300, 200, nullptr, nullptr, nullptr, nullptr);
  WindowsWindowSystem system_;
};

TEST_F(WindowsWindowSystemTest, DisablesAndEnablesTheCloseItem) {
  const struct {
    bool enable;
    UINT close, unused_close;
  } steps[] = {{true, 0, kAbsent},
               {false, kAbsent, MFS_GRAYED},
               {false, kAbsent, MFS_GRAYED},
               {true, 0, kAbsent}};
  for (const auto& step : steps) {
    EXPECT_EQ(system_.EnableCloseButton(window_, step.enable), 0);
    EXPECT_EQ(StateOf(SC_CLOSE), step.close);
    EXPECT_EQ(StateOf(kUnusedClose), step.unused_close);
  }
  DestroyWindow(window_);
  EXPECT_EQ(system_.EnableCloseButton(window_, false), -1);
}

// Uses the browser that a window owns, from a timer that the browser's own message loop serves.
class BrowserUser {
 public:
  BrowserUser(HWND owner, const std::string& folder, WPARAM button) {
    owner_ = owner;
    folder_ = ToWide(folder);
    button_ = button;
    ticks_ = 0;
    timer_ = SetTimer(nullptr, 0, 20, Tick);
  }
  ~BrowserUser() { KillTimer(nullptr, timer_); }

 private:
  static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) {
    HWND browser = nullptr;
    do {
      browser = FindWindowExW(nullptr, browser, kDialogClass, nullptr);
    } while (browser && GetWindow(browser, GW_OWNER) != owner_);
    if (!browser) return;
    ++ticks_;
    if (!folder_.empty()) {
      SendMessageW(browser, BFFM_SETSELECTIONW, TRUE, reinterpret_cast<LPARAM>(folder_.c_str()));
    }
    if (ticks_ > 1) PostMessageW(browser, WM_COMMAND, button_, 0);
    if (ticks_ > 200) EndDialog(browser, FALSE);
  }

  inline static HWND owner_;
  inline static std::wstring folder_;
  inline static WPARAM button_;
  inline static int ticks_;
  UINT_PTR timer_;
};

TEST_F(WindowsWindowSystemTest, BrowsesForFolders) {
  const TempFolder temp;
  const std::string folder = temp.PutFolder("Größe");
  const struct {
    bool network;
    std::string chosen;
    WPARAM button;
    std::string result;
  } cases[] = {
      {false, folder, IDOK, folder}, {false, folder, IDCANCEL, ""}, {true, "", IDCANCEL, ""}};
  for (const auto& c : cases) {
    const BrowserUser user(window_, c.chosen, c.button);
    EXPECT_EQ(c.network ? system_.BrowseNetwork(window_, "Title")
                        : system_.BrowseForFolder(window_, "Title"),
              c.result);
  }
}

}  // namespace
}  // namespace korvex
