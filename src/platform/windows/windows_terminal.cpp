#include "platform/windows/windows_terminal.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_handle.h"

namespace korvex {
namespace {

constexpr int kDefaultColumns = 80;
constexpr wchar_t kEndOfInput = 0x1A;  // Ctrl-Z
constexpr std::size_t kLargestConsoleWrite = 8192;
constexpr DWORD kPipeInterval = 20;  // milliseconds between two looks into a pipe
constexpr DWORD kHandlerPatience = 1000;
constexpr int kLastPress = 3;  // of Ctrl-C, which ends the program

// Counts the presses of Ctrl-C that were not taken yet. Global, since the handler has no arguments.
HANDLE interrupts = nullptr;
std::atomic<int> untaken = 0;  // the same number, to look at
std::atomic<int> presses = 0;  // since the user last answered

BOOL WINAPI HandleControl(DWORD event) {
  // FALSE leaves the event to the system, which ends the program.
  if (event != CTRL_C_EVENT || ++presses == kLastPress) return FALSE;
  ++untaken;
  ReleaseSemaphore(interrupts, 1, nullptr);
  return TRUE;
}

bool IsConsole(HANDLE stream) {
  DWORD mode;
  return GetConsoleMode(stream, &mode);
}

HANDLE StandardInput() {
  return GetStdHandle(STD_INPUT_HANDLE);
}

HANDLE StandardError() {
  return GetStdHandle(STD_ERROR_HANDLE);
}

bool TakeWithin(DWORD milliseconds) {
  if (WaitForSingleObject(interrupts, milliseconds) != WAIT_OBJECT_0) return false;
  --untaken;
  return true;
}

}  // namespace

WindowsTerminal::WindowsTerminal() {
  // Kept to the end of the process, since the handler may still run.
  if (!interrupts) interrupts = CreateSemaphoreW(nullptr, 0, 0x7FFF, nullptr);
  while (TakeInterrupt()) continue;
  presses = 0;
  // A parent may have had Ctrl-C ignored; that is inherited and has to be undone.
  SetConsoleCtrlHandler(nullptr, FALSE);
  SetConsoleCtrlHandler(HandleControl, TRUE);
}

WindowsTerminal::~WindowsTerminal() {
  SetConsoleCtrlHandler(HandleControl, FALSE);
}

bool WindowsTerminal::CanAsk() const {
  return IsConsole(StandardInput()) && CanRedraw();
}

bool WindowsTerminal::CanRedraw() const {
  return IsConsole(StandardError());
}

int WindowsTerminal::Columns() const {
  CONSOLE_SCREEN_BUFFER_INFO screen{};
  if (!GetConsoleScreenBufferInfo(StandardError(), &screen)) return kDefaultColumns;
  const int columns = screen.srWindow.Right - screen.srWindow.Left + 1;
  return columns > 0 ? columns : kDefaultColumns;
}

void WindowsTerminal::WriteError(std::string_view text) {
  const HANDLE output = StandardError();
  DWORD written = 0;
  if (!IsConsole(output)) {
    while (!text.empty() &&
           WriteFile(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) {
      text.remove_prefix(written);
    }
    return;
  }
  const std::wstring wide = ToWide(text);
  for (std::wstring_view rest = wide; !rest.empty(); rest.remove_prefix(written)) {
    // Old consoles refuse a text that does not fit into their 64 KB of shared memory.
    const auto size = static_cast<DWORD>(std::min(rest.size(), kLargestConsoleWrite));
    if (!WriteConsoleW(output, rest.data(), size, &written, nullptr)) return;
  }
}

std::optional<std::string> WindowsTerminal::ReadLine() {
  for (;;) {
    const std::size_t end = unread_.find('\n');
    if (end != std::string::npos) {
      std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      if (line.ends_with('\r')) line.pop_back();
      presses = 0;
      return line;
    }
    Input input = WaitForInput();
    if (input == Input::kMore) input = ReadMore();
    if (input == Input::kInterrupted) {
      unread_.clear();
      return std::nullopt;
    }
    if (input == Input::kEnd) {
      if (unread_.empty()) return std::nullopt;
      unread_ += '\n';  // the last line may lack its end
    }
  }
}

bool WindowsTerminal::IsInterrupted() const {
  return untaken > 0;
}

bool WindowsTerminal::TakeInterrupt() {
  return TakeWithin(0);
}

// kMore when there is something to read, kInterrupted when Ctrl-C ended the wait; that press counts
// as the answer and is taken.
WindowsTerminal::Input WindowsTerminal::WaitForInput() {
  const HANDLE input = StandardInput();
  if (TakeInterrupt()) return Input::kInterrupted;
  if (IsConsole(input)) {
    // Of two that are ready the first one counts, so Ctrl-C goes before typed keys.
    const std::array<HANDLE, 2> sources{interrupts, input};
    const DWORD ready = WaitForMultipleObjects(sources.size(), sources.data(), FALSE, INFINITE);
    if (ready != WAIT_OBJECT_0) return Input::kMore;
    --untaken;
    return Input::kInterrupted;
  }
  if (GetFileType(input) != FILE_TYPE_PIPE) return Input::kMore;
  // Windows cannot wait for a pipe and another object together, so look at both in turn.
  for (;;) {
    DWORD available = 0;
    if (!PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr)) return Input::kMore;
    if (available > 0) return Input::kMore;
    if (TakeWithin(kPipeInterval)) return Input::kInterrupted;
  }
}

WindowsTerminal::Input WindowsTerminal::ReadMore() {
  return IsConsole(StandardInput()) ? ReadFromConsole() : ReadFromStream();
}

// The console gives whole lines, once the user has finished them.
WindowsTerminal::Input WindowsTerminal::ReadFromConsole() {
  std::array<wchar_t, 4096> letters;
  DWORD count = 0;
  SetLastError(ERROR_SUCCESS);
  if (!ReadConsoleW(StandardInput(), letters.data(), letters.size(), &count, nullptr)) {
    return Input::kEnd;
  }
  if (count == 0) {
    // Ctrl-C has emptied the line; its handler may come later.
    const bool aborted = GetLastError() == ERROR_OPERATION_ABORTED;
    return aborted && TakeWithin(kHandlerPatience) ? Input::kInterrupted : Input::kEnd;
  }
  const std::wstring_view text(letters.data(), count);
  const std::size_t end = text.find(kEndOfInput);
  unread_ += FromWide(text.substr(0, end));
  return end == std::wstring_view::npos ? Input::kMore : Input::kEnd;
}

WindowsTerminal::Input WindowsTerminal::ReadFromStream() {
  std::array<char, 4096> bytes;
  DWORD count = 0;
  if (!ReadFile(StandardInput(), bytes.data(), bytes.size(), &count, nullptr)) return Input::kEnd;
  unread_.append(bytes.data(), count);
  return count > 0 ? Input::kMore : Input::kEnd;
}

}  // namespace korvex
