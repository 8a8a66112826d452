#include "platform/windows/windows_file.h"

#include <algorithm>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_error.h"

namespace korvex {
namespace {

// Some file servers refuse to take more in one call.
constexpr std::size_t kLargestWrite = 16 * 1024 * 1024;

Error NotOrdinary(std::string_view action, const std::string& path, const char* what) {
  return Error(error_number::kPathFileAccess,
               "Cannot " + std::string(action) + " " + path + ": It is " + what);
}

}  // namespace

DWORD AttributesOf(const std::wstring& system_path) {
  const DWORD attributes = GetFileAttributesW(system_path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
    return attributes;
  }
  // Opening follows links; asking for the attributes by path does not.
  const Handle target(CreateFileW(system_path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION information;
  if (!target.IsOpen() || !GetFileInformationByHandle(target.Get(), &information)) {
    return INVALID_FILE_ATTRIBUTES;
  }
  return information.dwFileAttributes;
}

std::string FinalPath(HANDLE file, const std::string& path) {
  std::wstring final(MAX_PATH, L'\0');
  for (;;) {
    const DWORD size = GetFinalPathNameByHandleW(
        file, final.data(), static_cast<DWORD>(final.size()), FILE_NAME_NORMALIZED);
    if (size == 0) return path;
    const bool fits = size < final.size();
    final.resize(size);
    if (fits) return FromWide(final);
  }
}

bool IsFolder(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

void CheckNewName(const std::wstring& system_path, const std::string& path) {
  const std::wstring_view name =
      std::wstring_view(system_path).substr(system_path.find_last_of(L'\\') + 1);
  if (name.ends_with(L' ') || name.ends_with(L'.') || name.find(L':') != name.npos) {
    throw SystemError(ERROR_INVALID_NAME, "write to", path);
  }
}

Handle OpenFile(const std::wstring& system_path, const std::string& path, std::string_view action,
                DWORD access, DWORD creation) {
  if (creation == OPEN_ALWAYS && AttributesOf(system_path) == INVALID_FILE_ATTRIBUTES) {
    CheckNewName(system_path, path);
  }
  Handle file(CreateFileW(system_path.c_str(), access, kShareAll, nullptr, creation,
                          FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.IsOpen()) {
    const DWORD code = GetLastError();
    // Windows says "access denied" for a folder, which would send the user to the administrator.
    if (IsFolder(AttributesOf(system_path))) throw NotOrdinary(action, path, "a folder.");
    throw SystemError(code, action, path, Missing::kFile);
  }
  if (GetFileType(file.Get()) != FILE_TYPE_DISK) {
    throw NotOrdinary(action, path, "not an ordinary file.");
  }
  // File servers of other systems let an administrator write all the same.
  if (access != GENERIC_READ && (AttributesOf(system_path) & FILE_ATTRIBUTE_READONLY)) {
    throw SystemError(ERROR_ACCESS_DENIED, action, path);
  }
  return file;
}

void WriteAll(HANDLE file, std::span<const std::byte> bytes, const std::string& path) {
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), kLargestWrite));
    if (!WriteFile(file, bytes.data(), size, &written, nullptr)) {
      throw SystemError(GetLastError(), "write to", path, Missing::kFile);
    }
    if (written == 0) throw SystemError(ERROR_HANDLE_DISK_FULL, "write to", path);
    bytes = bytes.subspan(written);
  }
}

}  // namespace korvex
