#include "platform/windows/windows_file_system.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <limits>
#include <thread>
#include <utility>

#include "platform/windows/replacement_file.h"
#include "platform/windows/temporary_files.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_file.h"
#include "platform/windows/windows_path.h"
#include "text/text.h"

namespace korvex {
namespace {

class WindowsAppendFile : public AppendFile {
 public:
  WindowsAppendFile(Handle file, std::string path)
      : file_(std::move(file)), path_(std::move(path)) {}

  void Write(std::string_view bytes) override {
    WriteAll(file_.Get(), std::as_bytes(std::span(bytes)), path_);
  }

 private:
  Handle file_;
  std::string path_;
};

// The system deletes the lock file when its handle is closed.
class WindowsFileLock : public FileLock {
 public:
  explicit WindowsFileLock(Handle file) : file_(std::move(file)) {}

 private:
  Handle file_;
};

// A lock file that is just being deleted refuses access for this long.
constexpr std::chrono::milliseconds kVanishing{200};

// From the steps of 100 ns since 1601 in which the system counts.
std::int64_t Nanoseconds(const LARGE_INTEGER& time) {
  constexpr std::int64_t kStepsUntil1970 = 116444736000000000;
  return (time.QuadPart - kStepsUntil1970) * 100;
}

std::uint64_t Joined(DWORD high, DWORD low) {
  return std::uint64_t{high} << 32 | low;
}

void RefuseIfOwned(const std::string& path) {
  const std::size_t name = path.find_last_of("\\/:") + 1;  // 0 when there is no folder in the path
  const std::string folder = path.substr(0, name);
  // Two families of office programs, each with a file of its own beside the open workbook.
  for (const std::string& owner_file :
       {folder + "~$" + path.substr(name), folder + ".~lock." + path.substr(name) + "#"}) {
    if (AttributesOf(SystemPath(owner_file)) != INVALID_FILE_ATTRIBUTES) {
      throw InUse(path,
                  " (" + owner_file + " says so; delete it if no program has the file open).");
    }
  }
}

// Links and junctions; files that are stored elsewhere (in a cloud, for example) are no links. A
// file system that does not tell the kind shows a link all the same.
bool IsLink(const WIN32_FIND_DATAW& entry) {
  if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) return false;
  return entry.dwReserved0 == 0 || IsReparseTagNameSurrogate(entry.dwReserved0);
}

FolderEntry EntryOf(const std::wstring& folder, const WIN32_FIND_DATAW& entry) {
  FolderEntry found{FromWide(entry.cFileName), IsFolder(entry.dwFileAttributes), IsLink(entry),
                    (entry.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0};
  if (!found.is_link) return found;
  // The attributes in the entry are those of the link itself.
  const DWORD attributes = AttributesOf(folder + entry.cFileName);
  const DWORD code = GetLastError();
  found.is_folder = IsFolder(attributes);
  const bool leads_nowhere = code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
                             code == ERROR_CANT_RESOLVE_FILENAME;
  if (attributes == INVALID_FILE_ATTRIBUTES && !leads_nowhere) found.obstacle = SystemText(code);
  return found;
}

bool IsSelfOrParent(const wchar_t* name) {
  const std::wstring_view text = name;
  return text == L"." || text == L"..";
}

// A search for what lies in a folder.
class Search {
 public:
  explicit Search(const std::wstring& pattern)
      : handle_(FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry_, FindExSearchNameMatch,
                                 nullptr, FIND_FIRST_EX_LARGE_FETCH)) {}
  ~Search() {
    if (Found()) FindClose(handle_);
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;

  bool Found() const { return handle_ != INVALID_HANDLE_VALUE; }
  const WIN32_FIND_DATAW& Entry() const { return entry_; }
  bool Next() { return FindNextFileW(handle_, &entry_); }

 private:
  WIN32_FIND_DATAW entry_{};
  HANDLE handle_;
};

Handle OpenToAsk(const std::string& path) {
  return Handle(CreateFileW(SystemPath(path).c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// What is the same for one file by all its names. File systems that number their files with 128
// bits have no number of 64, and some number none at all: there the place is left.
struct Identity {
  explicit Identity(HANDLE file, const std::string& path) {
    FILE_ID_INFO id{};
    has_number = GetFileInformationByHandleEx(file, FileIdInfo, &id, sizeof id);
    volume = id.VolumeSerialNumber;
    std::memcpy(number.data(), &id.FileId, number.size());
    BY_HANDLE_FILE_INFORMATION information;
    if (!has_number && GetFileInformationByHandle(file, &information)) {
      volume = information.dwVolumeSerialNumber;
      number = {information.nFileIndexHigh, information.nFileIndexLow, 0, 0};
    }
    has_number = number != decltype(number){};
    if (!has_number) place = FinalPath(file, path);
  }

  bool operator==(const Identity& other) const {
    if (has_number != other.has_number) return false;
    return has_number ? volume == other.volume && number == other.number
                      : EqualText(place, other.place);
  }

  bool has_number = false;
  std::uint64_t volume = 0;
  std::array<DWORD, 4> number{};
  std::string place;
};

std::size_t ReadSome(HANDLE file, std::span<std::byte> bytes, const std::string& path) {
  constexpr std::size_t kLargestRead = 16 * 1024 * 1024;
  DWORD count = 0;
  const auto size = static_cast<DWORD>(std::min(bytes.size(), kLargestRead));
  if (!::ReadFile(file, bytes.data(), size, &count, nullptr)) {
    throw SystemError(GetLastError(), "read", path, Missing::kFile);
  }
  return count;
}

}  // namespace

WindowsFileSystem::WindowsFileSystem() {
  // Otherwise Windows shows a box "There is no disk in the drive" and the run waits for an answer.
  SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS);
}

std::string WindowsFileSystem::DriveName(std::string_view path) const {
  return FromWide(DriveOf(ToWide(path)));
}

std::vector<std::string> WindowsFileSystem::Drives() const {
  std::vector<std::string> drives;
  const DWORD present = GetLogicalDrives();
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    if (present >> (letter - 'A') & 1) drives.push_back(std::string{letter} + ":\\");
  }
  return drives;
}

std::string WindowsFileSystem::AbsolutePath(std::string_view path) const {
  return FromWide(AbsoluteWide(path));
}

bool WindowsFileSystem::FileExists(const std::string& path) const {
  // The path is cleaned of its last separator below, but "x.xls\" names no file.
  if (path.ends_with('\\') || path.ends_with('/')) return false;
  const DWORD attributes = AttributesOf(SystemPath(path));
  return attributes != INVALID_FILE_ATTRIBUTES && !IsFolder(attributes);
}

bool WindowsFileSystem::FolderExists(const std::string& path) const {
  return IsFolder(AttributesOf(SystemPath(path)));
}

bool WindowsFileSystem::IsOneOf(const std::string& file,
                                std::span<const std::string> others) const {
  // Held open while others are looked at: numbers are given anew when a file is gone.
  const Handle wanted = OpenToAsk(file);
  if (!wanted.IsOpen()) return false;
  const Identity identity(wanted.Get(), file);
  return std::ranges::any_of(others, [&](const std::string& other) {
    const Handle found = OpenToAsk(other);
    return found.IsOpen() && Identity(found.Get(), other) == identity;
  });
}

std::optional<FileVersion> WindowsFileSystem::VersionOf(const std::string& path) const {
  const Handle file = OpenToAsk(path);
  BY_HANDLE_FILE_INFORMATION identity{};
  FILE_BASIC_INFO times{};
  if (!file.IsOpen() || !GetFileInformationByHandle(file.Get(), &identity) ||
      !GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &times, sizeof times)) {
    const DWORD code = GetLastError();
    if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) return std::nullopt;
    throw SystemError(code, "read", path);
  }
  return FileVersion{
      identity.dwVolumeSerialNumber, Joined(identity.nFileIndexHigh, identity.nFileIndexLow),
      static_cast<std::int64_t>(Joined(identity.nFileSizeHigh, identity.nFileSizeLow)),
      Nanoseconds(times.LastWriteTime), Nanoseconds(times.ChangeTime)};
}

std::vector<FolderEntry> WindowsFileSystem::List(const std::string& folder) const {
  std::wstring path = SystemPath(folder);
  if (!path.empty() && !path.ends_with(L'\\')) path += L'\\';
  std::vector<FolderEntry> entries;
  Search search(path + L'*');
  if (!search.Found()) {
    const DWORD code = GetLastError();
    // The root of an empty drive has not even itself in it.
    if (code == ERROR_FILE_NOT_FOUND && FolderExists(folder)) return entries;
    throw SystemError(FileExists(folder) ? DWORD{ERROR_DIRECTORY} : code, "list", folder);
  }
  do {
    if (!IsSelfOrParent(search.Entry().cFileName)) entries.push_back(EntryOf(path, search.Entry()));
  } while (search.Next());
  if (GetLastError() != ERROR_NO_MORE_FILES) throw SystemError(GetLastError(), "list", folder);
  return entries;
}

void WindowsFileSystem::ReadFile(const std::string& path, std::vector<std::byte>& content) const {
  ReadStart(path, std::numeric_limits<std::size_t>::max(), content);
}

void WindowsFileSystem::ReadStart(const std::string& path, std::size_t most,
                                  std::vector<std::byte>& content) const {
  const Handle file = OpenFile(SystemPath(path), path, "read", GENERIC_READ, OPEN_EXISTING);
  LARGE_INTEGER told{};
  GetFileSizeEx(file.Get(), &told);
  // The size is a hint: a file may grow. One byte more than it tells finds the end without growing
  // the buffer.
  content.resize(std::min(most, static_cast<std::size_t>(told.QuadPart) + 1));
  std::size_t size = 0;
  while (size < most) {
    if (size == content.size()) {
      content.resize(std::min(most, size + std::max<std::size_t>(size, 65536)));
    }
    const std::size_t count = ReadSome(file.Get(), std::span(content).subspan(size), path);
    if (count == 0) break;
    size += count;
  }
  content.resize(size);
}

std::unique_ptr<AppendFile> WindowsFileSystem::OpenForAppending(const std::string& path) {
  RefuseIfOwned(path);
  Handle file = OpenFile(SystemPath(path), path, "write to", FILE_APPEND_DATA, OPEN_ALWAYS);
  return std::make_unique<WindowsAppendFile>(std::move(file), path);
}

void WindowsFileSystem::CheckWritable(const std::string& path) {
  RefuseIfOwned(path);
  const std::wstring system_path = SystemPath(path);
  if (AttributesOf(system_path) == INVALID_FILE_ATTRIBUTES) {
    // A new file is tried as the run will make it: under a name of its own, which is deleted again.
    WindowsReplacementFile replacement(path);
  } else {
    OpenFile(system_path, path, "write to", FILE_APPEND_DATA, OPEN_EXISTING);
  }
}

std::unique_ptr<ReplacementFile> WindowsFileSystem::Replace(const std::string& path) {
  return std::make_unique<WindowsReplacementFile>(path);
}

std::unique_ptr<ReplacementFile> WindowsFileSystem::ReplacePrivately(const std::string& path) {
  return std::make_unique<WindowsReplacementFile>(path, WindowsReplacementFile::Keep::kPlace);
}

std::unique_ptr<FileLock> WindowsFileSystem::Lock(const std::string& path) {
  const std::wstring name = SystemPath(path + ".lock");
  const auto start = std::chrono::steady_clock::now();
  for (;;) {
    Handle file(CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (file.IsOpen()) return std::make_unique<WindowsFileLock>(std::move(file));
    const DWORD code = GetLastError();
    const auto waited = std::chrono::steady_clock::now() - start;
    if (code == ERROR_SHARING_VIOLATION && waited > kLockPatience) {
      throw Error(error_number::kPermissionDenied, LockedText(path));
    }
    // "Access denied" also comes for a short time while the former owner's file is being deleted;
    // if it lasts, the folder forbids the file.
    const bool may_pass =
        code == ERROR_SHARING_VIOLATION || (code == ERROR_ACCESS_DENIED && waited < kVanishing);
    if (!may_pass) throw SystemError(code, "write to", path);
    std::this_thread::sleep_for(kLockInterval);
  }
}

void WindowsFileSystem::CreateFolder(const std::string& path) {
  if (CreateDirectoryW(SystemPath(path).c_str(), nullptr)) return;
  const DWORD code = GetLastError();
  if (!FolderExists(path)) throw SystemError(code, "create", path);
}

void WindowsFileSystem::DeleteFile(const std::string& path) {
  if (!DeleteFileW(SystemPath(path).c_str())) {
    throw SystemError(GetLastError(), "delete", path, Missing::kFile);
  }
}

}  // namespace korvex
