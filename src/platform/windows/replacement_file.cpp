#include "platform/windows/replacement_file.h"

#include <cstdio>
#include <random>
#include <utility>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_file.h"
#include "platform/windows/windows_path.h"

namespace korvex {
namespace {

constexpr int kNameAttempts = 100;

// Programs that look into every new file (virus scanners, search indexes) keep it open for a
// moment.
constexpr int kMoveAttempts = 20;
constexpr DWORD kMoveInterval = 25;  // milliseconds

std::string RandomName() {
  std::random_device random;
  char digits[2 * sizeof(unsigned) + 1];
  std::snprintf(digits, sizeof digits, "%08x", random());
  return std::string(".korvex-") + digits;
}

// Where the system comes out when it opens a path, links followed.
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

void MarkForDeletion(HANDLE file, bool mark) {
  FILE_DISPOSITION_INFO disposition{mark};
  SetFileInformationByHandle(file, FileDispositionInfo, &disposition, sizeof disposition);
}

bool IsPassing(DWORD code) {
  return code == ERROR_SHARING_VIOLATION || code == ERROR_ACCESS_DENIED;
}

DWORD ResultOf(BOOL done) {
  return done ? DWORD{ERROR_SUCCESS} : GetLastError();
}

}  // namespace

WindowsReplacementFile::WindowsReplacementFile(const std::string& path)
    : path_(path), target_(SystemPath(path)) {
  ExamineTarget();
  Create();
}

WindowsReplacementFile::~WindowsReplacementFile() {
  file_.Close();
  // Where a file cannot be marked for deletion, and after a Commit that failed.
  if (!name_.empty()) DeleteFileW(name_.c_str());
}

void WindowsReplacementFile::ExamineTarget() {
  if (AttributesOf(target_) == INVALID_FILE_ATTRIBUTES) {
    if (GetLastError() != ERROR_FILE_NOT_FOUND) throw Failure(GetLastError());
    CheckNewName(target_, path_);
    return;
  }
  // Whoever protected the file meant it, and whoever has it open would lose it.
  const Handle former = OpenFile(target_, path_, "write to", GENERIC_WRITE, OPEN_EXISTING);
  if (GetFileAttributesW(target_.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) {
    target_ = SystemPath(FinalPath(former.Get(), path_));
  }
  replaces_ = true;
}

void WindowsReplacementFile::Create() {
  const std::wstring folder = FolderOf(AbsoluteWide(FromWide(target_)));
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    std::wstring name = SystemPath(FromWide(folder) + "\\" + RandomName());
    file_ = Handle(CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file_.IsOpen()) {
      name_ = std::move(name);
      MarkForDeletion(file_.Get(), true);
      return;
    }
    if (GetLastError() != ERROR_FILE_EXISTS) break;
  }
  throw Failure(GetLastError());
}

void WindowsReplacementFile::Write(std::span<const std::byte> bytes) {
  WriteAll(file_.Get(), bytes, path_);
}

void WindowsReplacementFile::Commit() {
  if (!FlushFileBuffers(file_.Get())) throw Failure(GetLastError());
  MarkForDeletion(file_.Get(), false);
  // File servers report what could not be stored no later than here.
  if (!file_.Close()) throw Failure(GetLastError());
  const DWORD code = TakeItsPlace();
  if (code != ERROR_SUCCESS) throw Failure(code);
  name_.clear();
}

DWORD WindowsReplacementFile::TakeItsPlace() {
  DWORD code = ERROR_SUCCESS;
  for (int attempt = 0; attempt < kMoveAttempts; ++attempt) {
    if (attempt > 0) Sleep(kMoveInterval);
    code = replaces_ ? TakeOver() : Move();
    // The former file is gone, and its place is empty.
    if (code == ERROR_UNABLE_TO_MOVE_REPLACEMENT) {
      replaces_ = false;
      continue;
    }
    if (!IsPassing(code)) break;
  }
  if (code == ERROR_SUCCESS || !replaces_) return code;
  // Not everywhere can a file be given the former one's permissions.
  const DWORD moved = Move();
  return moved == ERROR_SUCCESS || !IsPassing(code) ? moved : code;
}

// With the permissions of the file in its place. Whether that can be replaced is found out first: a
// replacement that fails on the way may leave files of its own.
DWORD WindowsReplacementFile::TakeOver() const {
  Handle former(CreateFileW(target_.c_str(), GENERIC_READ | DELETE, kShareAll, nullptr,
                            OPEN_EXISTING, 0, nullptr));
  if (!former.IsOpen()) return GetLastError();
  former.Close();
  return ResultOf(ReplaceFileW(target_.c_str(), name_.c_str(), nullptr,
                               REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr));
}

DWORD WindowsReplacementFile::Move() const {
  return ResultOf(MoveFileExW(name_.c_str(), target_.c_str(),
                              MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
}

Error WindowsReplacementFile::Failure(DWORD code) const {
  return SystemError(code, "write to", path_);
}

}  // namespace korvex
