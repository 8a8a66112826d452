#include "platform/posix/replacement_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/posix/temporary_files.h"

namespace korvex {
namespace {

constexpr int kNameAttempts = 100;
constexpr char kPrefix[] = ".korvex-";
constexpr std::size_t kLongestName = 255;
constexpr off64_t kPartOnTheWay = 1 << 20;

std::string DescriptorPath(int fd) {
  return "/proc/self/fd/" + std::to_string(fd);
}

bool IsOfPermission(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EBUSY;
}

// Ends like the target's name, cut where it would be too long: a file system that refuses the
// characters of that name refuses this one too.
std::string NameLike(const std::string& target) {
  std::string name = TemporaryName(kPrefix) + "-";
  const std::string wanted = target.substr(target.rfind('/') + 1);
  const std::size_t size = name.size() + wanted.size();
  std::size_t start =
      size > kLongestName && wanted.size() <= kLongestName ? size - kLongestName : 0;
  while (start < wanted.size() && (wanted[start] & 0xC0) == 0x80) ++start;  // within a character
  return name + wanted.substr(start);
}

// Another file can be mounted over a file, and no rename replaces that.
bool IsMountPoint(const std::string& path) {
  struct statx status {};
  return statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) == 0 &&
         (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

}  // namespace

PosixReplacementFile::PosixReplacementFile(std::string target, mode_t new_mode)
    : target_(std::move(target)), folder_(FolderOf(target_)) {
  ExamineTarget();
  RemoveLeftovers(folder_, kPrefix);
  // Until it has the former file's permissions, nobody else may look into it.
  Create(former_ ? 0600 : new_mode);
}

PosixReplacementFile::~PosixReplacementFile() {
  if (!name_.empty()) unlink(name_.c_str());
}

void PosixReplacementFile::ExamineTarget() {
  // "new/" names a folder, which the system would only notice at the rename.
  if (target_.ends_with('/')) throw Failure(EISDIR);
  struct stat status {};
  if (stat(target_.c_str(), &status) != 0) {
    // A new file. Whether its folder takes one shows when it is made.
    if (errno == ENOENT) return;
    throw Failure(errno);
  }
  RequireOrdinaryFile(status.st_mode, "write to", target_);
  // rename() ignores the permissions of the file that it replaces, so they are checked here.
  if (IsWriteProtected(status.st_mode) ||
      faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) {
    throw Failure(EACCES);
  }
  CheckPlace();
  former_.emplace(target_, status);
}

// Whether the folder allows replacing the file: not for files of other users in a shared folder,
// nor for protected ones. rmdir() checks the right to remove a name before it notices that the name
// is no folder, so it answers this without touching the file.
void PosixReplacementFile::CheckPlace() const {
  if (IsMountPoint(target_)) throw FolderFailure(EBUSY);
  if (rmdir(target_.c_str()) != 0 && IsOfPermission(errno)) throw FolderFailure(errno);
}

void PosixReplacementFile::Create(mode_t mode) {
  // A nameless file gets its name through /proc.
  if (access("/proc/self/fd", X_OK) == 0) {
    file_ = OpenFile(folder_, O_TMPFILE | O_WRONLY, mode);
    if (file_.IsOpen()) return;
  }
  CreateUnderName(mode);
}

void PosixReplacementFile::CreateUnderName(mode_t mode) {
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    std::string name = folder_ + "/" + NameLike(target_);
    file_ = OpenFile(name, O_CREAT | O_EXCL | O_WRONLY, mode);
    if (!file_.IsOpen() && errno == EEXIST) continue;
    if (!file_.IsOpen()) break;
    // Another run may have taken the file for a leftover before the lock was ours.
    if (!HoldTemporary(file_.Get(), name)) continue;
    name_ = std::move(name);
    return;
  }
  // A user who may write the file but not into its folder would not understand "Permission denied"
  // about the file.
  throw IsOfPermission(errno) ? FolderFailure(errno) : Failure(errno);
}

void PosixReplacementFile::Write(std::span<const std::byte> bytes) {
  WriteAll(file_.Get(), bytes, target_);
  written_ += static_cast<off64_t>(bytes.size());
  if (written_ - on_the_way_ < kPartOnTheWay) return;
  // The disk begins with what there is, so that less is left to wait for at the end. Failures are
  // told there.
  sync_file_range(file_.Get(), on_the_way_, written_ - on_the_way_, SYNC_FILE_RANGE_WRITE);
  on_the_way_ = written_;
}

void PosixReplacementFile::Commit() {
  Finish();
  // A free name is taken without renaming, which an append-only folder (chattr +a) forbids.
  if (former_ || !name_.empty() || TakeFreePlace() != 0) {
    if (name_.empty()) GiveName();
    if (Rename() != 0) throw Failure(errno);
    name_.clear();
  }
  SyncFolder();
}

void PosixReplacementFile::CommitAsNew() {
  Finish();
  const int error = TakeFreePlace();
  if (error == EEXIST) {
    throw Error(error_number::kFileExists,
                "Cannot write to " + target_ + ": There is a file of that name now.");
  }
  if (error != 0) throw Failure(error);
  name_.clear();
  SyncFolder();
}

void PosixReplacementFile::Finish() {
  // Rights come before the name: nobody may open the new file with more rights than the former one
  // gave. Then the content has to reach the disk before the rename does, or a power failure could
  // leave an empty file in place of the former one.
  const int error = former_ ? former_->GiveTo(file_.Get()) : 0;
  if (error != 0) throw Failure(error);
  if (fsync(file_.Get()) != 0) throw Failure(errno);
  // Network file systems report what could not be stored when a descriptor is closed. The file
  // itself stays open until it has its place, for the lock.
  const int copy = fcntl(file_.Get(), F_DUPFD_CLOEXEC, 0);
  if (copy >= 0 && close(copy) != 0 && errno != EINTR) throw Failure(errno);
}

// rename() replaces a file, but needs a name to rename; linkat() gives a nameless file a name, but
// replaces none. So the file gets a temporary name first.
void PosixReplacementFile::GiveName() {
  const std::string nameless = DescriptorPath(file_.Get());
  flock(file_.Get(), LOCK_EX | LOCK_NB);  // before anybody can see it
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    std::string name = folder_ + "/" + TemporaryName(kPrefix);
    if (linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      name_ = std::move(name);
      return;
    }
    if (errno != EEXIST) break;
  }
  throw Failure(errno);
}

// Takes the target's name unless a file has it, in one step where the system can. Returns 0 or an
// errno, EEXIST when the name is taken.
int PosixReplacementFile::TakeFreePlace() {
  const char* const target = target_.c_str();
  if (name_.empty()) {
    const std::string nameless = DescriptorPath(file_.Get());
    return linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, target, AT_SYMLINK_FOLLOW) == 0 ? 0 : errno;
  }
  if (renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, target, RENAME_NOREPLACE) == 0) return 0;
  // Not every file system can rename without replacing. A second link never replaces, either.
  if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) return errno;
  if (link(name_.c_str(), target) == 0) {
    unlink(name_.c_str());
    return 0;
  }
  if (errno == EEXIST) return errno;
  // The file system has neither call: reserve the name with an empty file, then rename over it.
  const Descriptor place = OpenFile(target_, O_CREAT | O_EXCL | O_WRONLY, 0600);
  if (!place.IsOpen()) return errno;
  if (Rename() == 0) return 0;
  const int error = errno;
  unlink(target);
  return error;
}

// Some file systems (shared folders of virtual machines) do not rename what is open.
int PosixReplacementFile::Rename() {
  if (rename(name_.c_str(), target_.c_str()) == 0) return 0;
  file_.Close();
  return rename(name_.c_str(), target_.c_str());
}

// The new file is in place already: a folder that cannot be flushed is no reason to report failure.
void PosixReplacementFile::SyncFolder() {
  const Descriptor folder = OpenFile(folder_, O_RDONLY | O_DIRECTORY);
  if (folder.IsOpen()) fsync(folder.Get());
}

Error PosixReplacementFile::Failure(int error) const {
  return SystemError(error, "write to", target_);
}

Error PosixReplacementFile::FolderFailure(int error) const {
  const Error cause = SystemError(error, "put a new file in place in the folder", folder_);
  return Error(cause.Number(), "Cannot write to " + target_ + ": " + cause.Description() +
                                   " Choose another folder for it.");
}

}  // namespace korvex
