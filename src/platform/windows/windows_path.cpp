#include "platform/windows/windows_path.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace korvex {
namespace {

constexpr std::wstring_view kVerbatim = L"\\\\?\\";
constexpr std::wstring_view kDevice = L"\\\\.\\";
constexpr std::wstring_view kVerbatimShare = L"\\\\?\\UNC\\";
// Windows wants room for a short file name behind a folder's path, within 260 characters.
constexpr std::size_t kLongestPlain = MAX_PATH - 13;

std::wstring Native(std::string_view path) {
  std::wstring native = ToWide(path);
  std::ranges::replace(native, L'/', L'\\');
  if (!native.starts_with(kVerbatim) && !native.starts_with(kDevice)) return native;
  const std::wstring_view name = std::wstring_view(native).substr(kVerbatim.size());
  if (name.size() > 1 && name[1] == L':') {
    native.erase(0, kVerbatim.size());
  } else if (_wcsnicmp(name.data(), L"UNC\\", 4) == 0) {
    native.replace(0, kVerbatimShare.size(), L"\\\\");
  }
  return native;
}

// `path` as the system completes it: "." and "C:" are current folders.
std::wstring Complete(const std::wstring& path) {
  std::wstring complete(MAX_PATH, L'\0');
  for (;;) {
    const DWORD size = GetFullPathNameW(path.c_str(), static_cast<DWORD>(complete.size()),
                                        complete.data(), nullptr);
    const bool fits = size < complete.size();
    complete.resize(size);
    if (fits) return complete;
  }
}

// Calls `take` with every component of a path behind its drive.
template <class Take>
void ForEachComponent(std::wstring_view path, Take take) {
  for (std::size_t start = 0; start < path.size();) {
    const std::size_t end = std::min(path.find(L'\\', start), path.size());
    if (end > start) take(path.substr(start, end - start));
    start = end + 1;
  }
}

bool SystemWouldChange(std::wstring_view absolute) {
  // Only where needed: some programs and file servers do not take the long form.
  bool would = absolute.size() > kLongestPlain;
  ForEachComponent(absolute, [&](std::wstring_view name) {
    would = would || name.ends_with(L'.') || name.ends_with(L' ');
  });
  return would;
}

}  // namespace

std::wstring DriveOf(std::wstring_view path) {
  std::wstring native(path);
  std::ranges::replace(native, L'/', L'\\');
  if (native.size() >= 2 && native[1] == L':') return native.substr(0, 2);
  if (!native.starts_with(L"\\\\")) return {};
  const std::size_t server_end = native.find(L'\\', 2);
  if (server_end == std::wstring::npos || server_end == 2) return {};
  return native.substr(0, native.find(L'\\', server_end + 1));
}

std::wstring AbsoluteWide(std::string_view path) {
  std::wstring whole = Native(path);
  std::wstring drive = DriveOf(whole);
  if (drive.empty() && whole.starts_with(L'\\')) {
    drive = DriveOf(Complete(L"."));
    whole.insert(0, drive);
  } else if (drive.empty()) {
    whole = Complete(L".") + L'\\' + whole;
    drive = DriveOf(whole);
  } else if (drive.ends_with(L':') && whole.size() > 2 && whole[2] != L'\\') {
    whole = Complete(drive) + L'\\' + whole.substr(2);
  }

  std::vector<std::wstring_view> names;
  ForEachComponent(std::wstring_view(whole).substr(drive.size()), [&](std::wstring_view name) {
    if (name == L"..") {
      if (!names.empty()) names.pop_back();
    } else if (name != L".") {
      names.push_back(name);
    }
  });
  if (names.empty()) return drive + L'\\';
  std::wstring absolute = drive;
  for (const std::wstring_view name : names) absolute.append(L"\\").append(name);
  return absolute;
}

std::wstring SystemPath(std::string_view path) {
  if (path.empty()) return {};
  std::wstring absolute = AbsoluteWide(path);
  if (absolute.starts_with(kVerbatim) || !SystemWouldChange(absolute)) return absolute;
  // "\\server\share" becomes "\\?\UNC\server\share", and "C:\x" becomes "\\?\C:\x".
  const bool is_share = absolute.starts_with(L"\\\\");
  absolute.replace(0, is_share ? 2 : 0, is_share ? kVerbatimShare : kVerbatim);
  return absolute;
}

std::wstring FolderOf(const std::wstring& absolute) {
  const std::size_t root = DriveOf(absolute).size() + 1;
  return absolute.substr(0, std::max(absolute.rfind(L'\\'), root));
}

}  // namespace korvex
