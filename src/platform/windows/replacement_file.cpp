#include "platform/windows/replacement_file.h"

#include <chrono>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_file.h"
#include "platform/windows/windows_path.h"

namespace korvex {
namespace {

constexpr wchar_t kPrefix[] = L".korvex-";

// Programs that look into every new file (virus scanners, search indexes) keep it open for a
// moment. At the end of a run more is at stake than a moment (`patience`).
constexpr std::chrono::milliseconds kMoment{500};
constexpr DWORD kInterval = 25;  // milliseconds

bool MarkForDeletion(HANDLE file, bool mark) {
  FILE_DISPOSITION_INFO disposition{mark};
  return SetFileInformationByHandle(file, FileDispositionInfo, &disposition, sizeof disposition);
}

bool IsPassing(DWORD code) {
  return code == ERROR_SHARING_VIOLATION || code == ERROR_ACCESS_DENIED;
}

DWORD ResultOf(BOOL done) {
  return done ? DWORD{ERROR_SUCCESS} : GetLastError();
}

// Repeats `step` while it fails for a cause that may pass.
template <class Step>
DWORD Patiently(std::chrono::milliseconds patience, Step step) {
  const auto end = std::chrono::steady_clock::now() + patience;
  for (;;) {
    const DWORD code = step();
    // "Access denied" as well: so the system answers for a file that is being deleted.
    if (!IsPassing(code) || std::chrono::steady_clock::now() >= end) return code;
    Sleep(kInterval);
  }
}

// The access control list of a file, in a security descriptor.
class AccessList {
 public:
  explicit AccessList(const std::wstring& file) {
    constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    GetFileSecurityW(file.c_str(), kList, nullptr, 0, &size);
    descriptor_.resize(size);
    if (size == 0 || !GetFileSecurityW(file.c_str(), kList, Descriptor(), size, &size)) {
      descriptor_.clear();
      return;
    }
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(Descriptor(), &control, &revision);
    is_protected_ = control & SE_DACL_PROTECTED;
  }

  bool IsKnown() const { return !descriptor_.empty(); }

  // Whether it says more than every new file of the folder gets by itself.
  bool IsOwn() const {
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* list = nullptr;
    GetSecurityDescriptorDacl(Descriptor(), &present, &list, &defaulted);
    if (is_protected_ || !present || list == nullptr) return is_protected_;
    for (DWORD i = 0; i < list->AceCount; ++i) {
      void* entry = nullptr;
      if (!GetAce(list, i, &entry)) continue;
      if (!(static_cast<const ACE_HEADER*>(entry)->AceFlags & INHERITED_ACE)) return true;
    }
    return false;
  }

  DWORD GiveTo(const std::wstring& file) const {
    const SECURITY_INFORMATION inheritance =
        // Without this the system would add the folder's entries to a list that shuts them out.
        is_protected_ ? PROTECTED_DACL_SECURITY_INFORMATION : UNPROTECTED_DACL_SECURITY_INFORMATION;
    return ResultOf(
        SetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION | inheritance, Descriptor()));
  }

 private:
  PSECURITY_DESCRIPTOR Descriptor() const { return descriptor_.data(); }

  mutable std::vector<std::byte> descriptor_;
  bool is_protected_ = false;
};

}  // namespace

WindowsReplacementFile::WindowsReplacementFile(const std::string& path, Keep keep,
                                               std::chrono::milliseconds patience)
    : path_(path),
      target_(SystemPath(path)),
      keep_(keep),
      patience_(patience),
      owned_name_(kPrefix) {
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
    if (GetFileAttributesW(target_.c_str()) != INVALID_FILE_ATTRIBUTES) {
      throw Error(error_number::kPathNotFound,
                  "Cannot write to " + path_ +
                      ": It is a link to a file that does not exist. Delete the link, or put the "
                      "file back.");
    }
    CheckNewName(target_, path_);
    return;
  }
  // Moving a file over a protected one, or over one that a program has open, is refused here.
  const Handle former = OpenFile(target_, path_, "write to", GENERIC_WRITE, OPEN_EXISTING);
  if (GetFileAttributesW(target_.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) {
    // The link stays, and the file that it leads to is replaced.
    target_ = SystemPath(FinalPath(former.Get(), path_));
  }
  CheckPlace();
  replaces_ = true;
}

// Whether the folder, and the programs that have the file open, allow replacing it.
void WindowsReplacementFile::CheckPlace() const {
  const DWORD code = Patiently(kMoment, [&] {
    // Asking for the right to delete is enough: nothing is deleted here.
    return ResultOf(Handle(CreateFileW(target_.c_str(), GENERIC_READ | DELETE, kShareAll, nullptr,
                                       OPEN_EXISTING, 0, nullptr))
                        .IsOpen());
  });
  if (code == ERROR_SUCCESS) return;
  const Error cause = SystemError(code, "put a new file in its place in the folder",
                                  FromWide(FolderOf(AbsoluteWide(path_))));
  throw Error(cause.Number(), "Cannot write to " + path_ + ": " + cause.Description());
}

void WindowsReplacementFile::Create() {
  const std::string folder = FromWide(FolderOf(AbsoluteWide(FromWide(target_)))) + "\\";
  // Long paths need another form, so the form is chosen for the whole name, not for the folder.
  std::wstring name = SystemPath(folder + FromWide(owned_name_.Text()));
  RemoveLeftovers(name.substr(0, name.size() - owned_name_.Text().size()), kPrefix);
  // Not shared, so that no other program sees half a workbook.
  file_ = Handle(CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                             FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file_.IsOpen()) {
    const DWORD code = GetLastError();
    // So Windows answers for a folder that it protects from programs that it does not know.
    if (code == ERROR_FILE_NOT_FOUND && IsFolder(AttributesOf(SystemPath(folder)))) {
      throw Error(error_number::kPermissionDenied,
                  "Cannot write to " + path_ +
                      ": Windows protects the folder and lets only programs that it knows make "
                      "files there (Controlled folder access). Allow KORVEX, or choose another "
                      "folder.");
    }
    throw Failure(code);
  }
  name_ = std::move(name);
  if (replaces_) TakeOverRights();
  // Not before: a file that is marked for deletion cannot be opened.
  is_marked_ = MarkForDeletion(file_.Get(), true);
}

// If the list cannot be set, the new file keeps the list that the folder gives, which is right when
// the former file had no entries of its own.
void WindowsReplacementFile::TakeOverRights() {
  const AccessList former(target_);
  if (!former.IsKnown()) return;
  const DWORD code = former.GiveTo(name_);
  if (code == ERROR_SUCCESS || !former.IsOwn()) return;
  file_.Close();
  DeleteFileW(name_.c_str());
  throw SystemError(code, "give a new file the permissions of", path_);
}

void WindowsReplacementFile::Write(std::span<const std::byte> bytes) {
  WriteAll(file_.Get(), bytes, path_);
}

void WindowsReplacementFile::Commit() {
  Finish();
  const DWORD code = TakeItsPlace();
  if (code != ERROR_SUCCESS) throw Failure(code);
  name_.clear();
}

void WindowsReplacementFile::CommitAsNew() {
  Finish();
  const DWORD code = Patiently(patience_, [&] { return Move(MOVEFILE_WRITE_THROUGH); });
  if (code == ERROR_ALREADY_EXISTS || code == ERROR_FILE_EXISTS) {
    throw Error(error_number::kFileExists,
                "Cannot write to " + path_ + ": There is a file of that name now.");
  }
  if (code != ERROR_SUCCESS) throw Failure(code);
  name_.clear();
}

void WindowsReplacementFile::Finish() {
  if (!FlushFileBuffers(file_.Get())) throw Failure(GetLastError());
  // From here to the move a killed program leaves the file; the next run removes it
  // (RemoveLeftovers).
  // A mark that stayed would delete the output after all.
  if (is_marked_ && !MarkForDeletion(file_.Get(), false)) throw Failure(GetLastError());
  // File servers report what could not be stored no later than here.
  if (!file_.Close()) throw Failure(GetLastError());
}

DWORD WindowsReplacementFile::TakeItsPlace() {
  constexpr DWORD kReplace = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  const DWORD code = Patiently(patience_, [&] {
    const bool takes_over = replaces_ && keep_ == Keep::kAttributes;
    const DWORD taken = takes_over ? TakeOver() : Move(kReplace);
    // ReplaceFile works in two steps and was stopped between them.
    if (taken != ERROR_UNABLE_TO_MOVE_REPLACEMENT) return taken;
    // The former file is gone, and its place is empty.
    replaces_ = false;
    return Move(kReplace);
  });
  if (code == ERROR_SUCCESS || !replaces_) return code;
  // ReplaceFile is not supported everywhere: move without the attributes and streams then.
  const DWORD moved = Move(kReplace);
  return moved == ERROR_SUCCESS || !IsPassing(code) ? moved : code;
}

// Keeps the attributes and streams of the former file. Checks first that it can be replaced:
// ReplaceFile may leave files of its own behind when it fails half-way.
DWORD WindowsReplacementFile::TakeOver() const {
  Handle former(CreateFileW(target_.c_str(), GENERIC_READ | DELETE, kShareAll, nullptr,
                            OPEN_EXISTING, 0, nullptr));
  if (!former.IsOpen()) return GetLastError();
  former.Close();
  return ResultOf(ReplaceFileW(target_.c_str(), name_.c_str(), nullptr,
                               REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr));
}

DWORD WindowsReplacementFile::Move(DWORD flags) const {
  return ResultOf(MoveFileExW(name_.c_str(), target_.c_str(), flags));
}

Error WindowsReplacementFile::Failure(DWORD code) const {
  return SystemError(code, "write to", path_);
}

}  // namespace korvex
