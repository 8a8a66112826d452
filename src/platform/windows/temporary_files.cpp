#include "platform/windows/temporary_files.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <random>
#include <vector>

#include "platform/windows/windows_api.h"

namespace korvex {
namespace {

std::wstring HexDigits(std::uint32_t number) {
  wchar_t digits[2 * sizeof number + 1];
  std::swprintf(digits, std::size(digits), L"%08x", number);
  return digits;
}

// A short, constant mark of the computer: the hash FNV-1a over its name.
std::wstring MachineMark() {
  std::array<wchar_t, 256> name{};
  auto size = static_cast<DWORD>(name.size());
  GetComputerNameExW(ComputerNameDnsHostname, name.data(), &size);
  std::uint32_t hash = 2166136261u;
  for (const wchar_t* c = name.data(); *c != L'\0'; ++c) hash = (hash ^ *c) * 16777619u;
  return HexDigits(hash);
}

// Visible in all sessions: a run at night may share folders with a user who is logged on.
std::wstring MutexName(std::wstring_view name) {
  return L"Global\\KORVEX" + std::wstring(name);
}

// Also when the mutex is another user's, which this one may not open.
bool HasOwner(std::wstring_view name) {
  const Handle mutex(OpenMutexW(SYNCHRONIZE, FALSE, MutexName(name).c_str()));
  return mutex.IsOpen() || GetLastError() != ERROR_FILE_NOT_FOUND;
}

}  // namespace

TemporaryName::TemporaryName(std::wstring_view prefix, std::wstring_view ending) {
  std::random_device random;
  text_ = std::wstring(prefix) + MachineMark() + L"-" + HexDigits(random()) + std::wstring(ending);
  mutex_ = Handle(CreateMutexW(nullptr, FALSE, MutexName(text_).c_str()));
}

void RemoveLeftovers(const std::wstring& folder, std::wstring_view prefix) {
  const std::wstring marked = std::wstring(prefix) + MachineMark() + L"-";
  WIN32_FIND_DATAW entry{};
  const HANDLE search = FindFirstFileW((folder + marked + L"*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return;
  // Collected first: what is deleted during a search can make it skip others.
  std::vector<WIN32_FIND_DATAW> found;
  do {
    if (std::wstring_view(entry.cFileName).starts_with(marked)) found.push_back(entry);
  } while (FindNextFileW(search, &entry));
  FindClose(search);
  for (const WIN32_FIND_DATAW& leftover : found) {
    const DWORD attributes = leftover.dwFileAttributes;
    // Nothing is deleted through a link.
    if (attributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY)) continue;
    if (!HasOwner(leftover.cFileName)) DeleteFileW((folder + leftover.cFileName).c_str());
  }
}

}  // namespace korvex
