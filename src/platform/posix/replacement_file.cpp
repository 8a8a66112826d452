#include "platform/posix/replacement_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <utility>

namespace korvex {
namespace {

constexpr int kNameAttempts = 100;

std::string RandomName(const std::string& folder) {
  std::random_device random;
  char digits[2 * sizeof(unsigned) + 1];
  std::snprintf(digits, sizeof digits, "%08x", random());
  return folder + "/.korvex-" + digits;
}

std::string DescriptorPath(int fd) {
  return "/proc/self/fd/" + std::to_string(fd);
}

}  // namespace

PosixReplacementFile::PosixReplacementFile(std::string target, mode_t new_mode)
    : target_(std::move(target)), folder_(FolderOf(target_)) {
  ExamineTarget();
  // Until it has the former file's permissions, nobody else may look into it.
  Create(former_ ? 0600 : new_mode);
}

PosixReplacementFile::~PosixReplacementFile() {
  if (!name_.empty()) unlink(name_.c_str());
}

void PosixReplacementFile::ExamineTarget() {
  struct stat status {};
  if (stat(target_.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    throw Failure(errno);
  }
  RequireOrdinaryFile(status.st_mode, "write to", target_);
  // Renaming asks for no permission on the file itself, but who protected it meant it.
  if (IsWriteProtected(status.st_mode) ||
      faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) {
    throw Failure(EACCES);
  }
  former_ = Former{status.st_mode & mode_t{07777}, status.st_uid, status.st_gid};
}

void PosixReplacementFile::Create(mode_t mode) {
  // A nameless file gets its name through /proc.
  if (access("/proc/self/fd", X_OK) == 0) {
    file_ = OpenFile(folder_, O_TMPFILE | O_WRONLY, mode);
    if (file_.IsOpen()) return;
  }
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    std::string name = RandomName(folder_);
    file_ = OpenFile(name, O_CREAT | O_EXCL | O_WRONLY, mode);
    if (file_.IsOpen()) {
      name_ = std::move(name);
      return;
    }
    if (errno != EEXIST) break;
  }
  throw Failure(errno);
}

void PosixReplacementFile::Write(std::span<const std::byte> bytes) {
  WriteAll(file_.Get(), bytes, target_);
}

void PosixReplacementFile::Commit() {
  TakeOverPermissions();
  if (fsync(file_.Get()) != 0) throw Failure(errno);
  if (name_.empty()) GiveName();
  // Network file systems report what could not be stored no later than here.
  if (close(file_.Release()) != 0 && errno != EINTR) throw Failure(errno);
  if (rename(name_.c_str(), target_.c_str()) != 0) throw Failure(errno);
  name_.clear();
  SyncFolder();
}

void PosixReplacementFile::TakeOverPermissions() {
  if (!former_) return;
  // Only the administrator can give a file away; a member can still keep the group.
  if (fchown(file_.Get(), former_->owner, former_->group) != 0 &&
      fchown(file_.Get(), static_cast<uid_t>(-1), former_->group) != 0) {
    former_->mode &= static_cast<mode_t>(~(S_ISUID | S_ISGID));
  }
  // File systems without permissions refuse this, and lose nothing by it.
  if (fchmod(file_.Get(), former_->mode) != 0 && errno != EPERM && errno != ENOTSUP) {
    throw Failure(errno);
  }
}

void PosixReplacementFile::GiveName() {
  const std::string nameless = DescriptorPath(file_.Get());
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    std::string name = RandomName(folder_);
    if (linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      name_ = std::move(name);
      return;
    }
    if (errno != EEXIST) break;
  }
  throw Failure(errno);
}

// The new file is in place already: a folder that cannot be flushed is no reason to report failure.
void PosixReplacementFile::SyncFolder() {
  const Descriptor folder = OpenFile(folder_, O_RDONLY | O_DIRECTORY);
  if (folder.IsOpen()) fsync(folder.Get());
}

Error PosixReplacementFile::Failure(int error) const {
  return SystemError(error, "write to", target_);
}

}  // namespace korvex
