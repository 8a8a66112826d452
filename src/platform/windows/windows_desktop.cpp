#include "platform/windows/windows_desktop.h"

#include <memory>

#include "platform/windows/com_apartment.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_handle.h"

// After the header of the system, which they need.
#include <mmsystem.h>
#include <shellapi.h>
#include <shlobj.h>

namespace korvex {
namespace {

constexpr UINT kPlainBeep = 0xFFFFFFFF;

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
  // The browser writes the chosen name here, without asking how much fits.
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

bool HasDesktop() {
  USEROBJECTFLAGS flags{};
  return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                   nullptr) &&
         (flags.dwFlags & WSF_VISIBLE);
}

void WindowsShell::Open(const std::string& file) {
  // The program of a document may be found by a component of the shell.
  const ComApartment apartment;
  ShellExecuteW(nullptr, L"open", ToWide(file).c_str(), L"", L"0", SW_SHOWNORMAL);
}

void WindowsShell::OpenInTextEditor(const std::string& file) {
  // CreateProcess may write into the command line, so it is a buffer of its own.
  std::wstring command = L"Notepad.EXE \"" + ToWide(file) + L"\"";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESHOWWINDOW;
  start.wShowWindow = SW_SHOWNOACTIVATE;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                      &process)) {
    return;
  }
  const Handle notepad(process.hProcess);
  const Handle thread(process.hThread);
}

std::string WindowsShell::EnvironmentVariable(const std::string& name) const {
  const std::wstring wide_name = ToWide(name);
  std::wstring value(MAX_PATH, L'\0');
  for (;;) {
    const auto size = static_cast<DWORD>(value.size());
    const DWORD length = GetEnvironmentVariableW(wide_name.c_str(), value.data(), size);
    value.resize(length);
    if (length < size) return FromWide(value);
  }
}

void WindowsSound::Beep() {
  MessageBeep(kPlainBeep);
}

void WindowsSound::PlayAlias(const std::string& alias) {
  // Does not wait: neither for the end of this sound nor for another program's.
  PlaySoundW(ToWide(alias).c_str(), nullptr, SND_ALIAS | SND_ASYNC | SND_NOWAIT);
}

int WindowsWindowSystem::EnableCloseButton(void* window, bool enable) {
  const auto handle = static_cast<HWND>(window);
  if (!IsWindow(handle)) return kNoWindow;
  const HMENU menu = GetSystemMenu(handle, FALSE);
  const UINT former = enable ? kUnusedClose : kClose;
  const UINT wanted = enable ? kClose : kUnusedClose;

  MENUITEMINFOW item{};
  item.cbSize = sizeof item;
  item.fMask = MIIM_STATE;
  // The item is not there under this identifier: it is in the wanted state, or has been removed.
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
