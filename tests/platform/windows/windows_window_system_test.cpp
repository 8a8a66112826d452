#include "platform/windows/windows_desktop.h"

#include <gtest/gtest.h>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "tests/platform/temp_folder.h"

// After the header of the system, which it needs.
#include <shlobj.h>

namespace korvex {
namespace {

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
  const std::string folder = temp /
                             "Gr\xC3\xB6\xC3\x9F"
                             "e";
  CreateDirectoryW(ToWide(folder).c_str(), nullptr);
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
