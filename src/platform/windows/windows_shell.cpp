#include "platform/windows/windows_shell.h"

#include "platform/windows/com_apartment.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_handle.h"

// After the header of the system, which it needs.
#include <shellapi.h>

namespace korvex {

void WindowsShell::Open(const std::string& file) {
  // The program of a document may be found by a component of the shell.
  const ComApartment apartment;
  ShellExecuteW(nullptr, L"open", ToWide(file).c_str(), L"", L"0", SW_SHOWNORMAL);
}

void WindowsShell::OpenInTextEditor(const std::string& file) {
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

}  // namespace korvex
