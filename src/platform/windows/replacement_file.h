// A file written beside its target that takes the target's place as a whole.
//
// Its name begins with ".korvex-", in the target's own folder, since a file can only be renamed
// within one volume. While it is written it is marked for deletion, so that the system deletes it
// even when the program is killed. The next replacement in that folder removes what a program
// leaves that is killed just after that.
//
// The constructor checks that the target can be replaced, so that what forbids it is reported
// before the first byte.
//
// The system replaces a file in one of two ways. One keeps the attributes and streams of the former
// file, but for a moment there is no file of that name; the other has no such moment.
#pragma once

#include <chrono>
#include <string>

#include "platform/file_system.h"
#include "platform/windows/temporary_files.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_handle.h"

namespace korvex {

class WindowsReplacementFile : public ReplacementFile {
 public:
  // What the new file must not lose when it replaces one.
  enum class Keep {
    kAttributes,  // of the former file: for the user's own files
    kPlace,       // for files that other programs read at any time
  };

  // `patience` is how long a Commit waits for programs that have either file open.
  explicit WindowsReplacementFile(const std::string& path, Keep keep = Keep::kAttributes,
                                  std::chrono::milliseconds patience = std::chrono::seconds(10));
  ~WindowsReplacementFile() override;
  WindowsReplacementFile(const WindowsReplacementFile&) = delete;
  WindowsReplacementFile& operator=(const WindowsReplacementFile&) = delete;

  void Write(std::span<const std::byte> bytes) override;
  void Commit() override;
  void CommitAsNew() override;

 private:
  // The steps of the constructor. Each throws what would keep Commit from replacing the target.
  void ExamineTarget();
  void CheckPlace() const;
  void Create();
  void TakeOverRights();
  // The steps of both kinds of Commit. Those that return a code return that of GetLastError.
  void Finish();
  DWORD TakeItsPlace();
  DWORD TakeOver() const;
  DWORD Move(DWORD flags) const;
  Error Failure(DWORD code) const;

  std::string path_;     // as the caller spells it
  std::wstring target_;  // what it leads to, for the system
  std::wstring name_;    // of the file beside it, for the system; empty once it is in place
  Keep keep_;
  std::chrono::milliseconds patience_;
  bool is_marked_ = false;  // for deletion; not every file system can
  bool replaces_ = false;
  TemporaryName owned_name_;
  Handle file_;
};

}  // namespace korvex
