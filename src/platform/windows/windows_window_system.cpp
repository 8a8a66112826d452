#include "platform/windows/windows_window_system.h"

#include <memory>

#include "platform/windows/com_apartment.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

// After the header of the system, which it needs.
#include <shlobj.h>

namespace korvex {
namespace {

constexpr int kDone = 0;
constexpr int kNoWindow = -1;
constexpr int kSameIdentifier = -2;
constexpr int kSameState = -3;

// Under this identifier the close item is no command: the window ignores its close box.
constexpr auto kUnusedClose = static_cast<UINT>(-10);
constexpr UINT kClose = SC_CLOSE;

constexpr DWORD kLongestPath = 32768;

struct ShellItemDeleter {
  void operator()(ITEMIDLIST* item) const { CoTaskMemFree(item); }
};
using ShellItem = std::unique_ptr<ITEMIDLIST, ShellItemDeleter>;

// Empty for what is no part of a file system.
std::wstring PathOf(const ShellItem& item) {
  std::wstring path(kLongestPath, L'\0');
  if (!item || !SHGetPathFromIDListEx(item.get(), path.data(), kLongestPath, GPFIDL_DEFAULT)) {
    return {};
  }
  path.resize(path.find(L'\0'));
  return path;
}

// Only folders of a file system can be confirmed, and computers of the network. No root is the
// desktop.
std::wstring Browse(void* owner, const ShellItem& root, const std::string& title) {
  const ComApartment apartment;
  const std::wstring wide_title = ToWide(title);
  wchar_t name[MAX_PATH]{};
  BROWSEINFOW browser{};
  browser.hwndOwner = static_cast<HWND>(owner);
  browser.pidlRoot = root.get();
  browser.pszDisplayName = name;
  browser.lpszTitle = wide_title.c_str();
  browser.ulFlags = BIF_RETURNONLYFSDIRS;
  return PathOf(ShellItem(SHBrowseForFolderW(&browser)));
}

// "\\computer" without a share.
bool IsComputer(const std::wstring& path) {
  return path.starts_with(L"\\\\") && path.find(L'\\', 2) == std::wstring::npos;
}

}  // namespace

int WindowsWindowSystem::EnableCloseButton(void* window, bool enable) {
  const auto handle = static_cast<HWND>(window);
  if (!IsWindow(handle)) return kNoWindow;
  const HMENU menu = GetSystemMenu(handle, FALSE);
  const UINT former = enable ? kUnusedClose : kClose;
  const UINT wanted = enable ? kClose : kUnusedClose;

  MENUITEMINFOW item{};
  item.cbSize = sizeof item;
  item.fMask = MIIM_STATE;
  if (!GetMenuItemInfoW(menu, former, FALSE, &item)) return kDone;
  item.fMask = MIIM_ID;
  item.wID = wanted;
  if (!SetMenuItemInfoW(menu, former, FALSE, &item)) return kSameIdentifier;
  item.fMask = MIIM_STATE;
  item.fState |= MFS_GRAYED;
  if (enable) item.fState -= MFS_GRAYED;
  if (!SetMenuItemInfoW(menu, wanted, FALSE, &item)) return kSameState;
  SendMessageW(handle, WM_NCACTIVATE, TRUE, 0);  // draws the close box anew
  return kDone;
}

std::string WindowsWindowSystem::BrowseForFolder(void* owner, const std::string& prompt) {
  return FromWide(Browse(owner, nullptr, prompt));
}

std::string WindowsWindowSystem::BrowseNetwork(void* owner, const std::string& title) {
  ITEMIDLIST* network = nullptr;
  SHGetSpecialFolderLocation(static_cast<HWND>(owner), CSIDL_NETWORK, &network);
  const std::wstring path = Browse(owner, ShellItem(network), title);
  return IsComputer(path) ? std::string() : FromWide(path);
}

}  // namespace korvex
