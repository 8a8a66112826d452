// One open file, as the file system, replacement files and standard streams use it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/windows/windows_handle.h"

namespace korvex {

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Attributes of what a system path leads to, links followed; INVALID_FILE_ATTRIBUTES with the last
// error set when there is nothing.
DWORD AttributesOf(const std::wstring& system_path);
bool IsFolder(DWORD attributes);

// The path of an open file, links followed; `path` where the system does not know.
std::string FinalPath(HANDLE file, const std::string& path);

// Error 75 for a file that is to be made with a name that Windows programs cannot reach: one with a
// blank or dot at its end, or with a colon, which would make it a hidden part of another file.
void CheckNewName(const std::wstring& system_path, const std::string& path);

// Opens a file while others may have it open, for reading (GENERIC_READ) or for writing. Throws the
// error of the system, 75 for what is no ordinary file, 70 for writing to a protected one. `path`
// is what messages call it.
Handle OpenFile(const std::wstring& system_path, const std::string& path, std::string_view action,
                DWORD access, DWORD creation);

// Writes all of it, or throws the error of the call that failed.
void WriteAll(HANDLE file, std::span<const std::byte> bytes, const std::string& path);

}  // namespace korvex
