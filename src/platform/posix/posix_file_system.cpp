#include "platform/posix/posix_file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <mntent.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <thread>
#include <utility>

#include "platform/posix/posix_io.h"
#include "platform/posix/replacement_file.h"
#include "platform/posix/temporary_files.h"

namespace korvex {
namespace {

constexpr int kLinkLevels = 40;  // as the kernel itself follows at most
constexpr mode_t kForAll = 0666;
constexpr mode_t kForUser = 0600;

// How long another run may hold a file that is about to be appended to.
constexpr int kMomentAttempts = 20;

class PosixAppendFile : public AppendFile {
 public:
  PosixAppendFile(Descriptor file, std::string path)
      : file_(std::move(file)), path_(std::move(path)) {}

  void Write(std::string_view bytes) override {
    WriteAll(file_.Get(), std::as_bytes(std::span(bytes)), path_);
  }

 private:
  Descriptor file_;
  std::string path_;
};

// Closing the descriptor gives the lock back.
class PosixFileLock : public FileLock {
 public:
  explicit PosixFileLock(Descriptor file) : file_(std::move(file)) {}

 private:
  Descriptor file_;
};

// `witness` says how that is known, up to the full stop.
Error InUse(const std::string& path, const std::string& witness) {
  return Error(error_number::kPermissionDenied,
               "Cannot write to " + path + ": The file is in use by another program" + witness);
}

// Office programs put this file beside a workbook that they have open.
std::string OwnerFile(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;  // 0 when there is no folder in the path
  return path.substr(0, name) + ".~lock." + path.substr(name) + "#";
}

// Follows the links of the last component; where they lead need not exist.
std::string FollowLinks(std::string path) {
  std::array<char, PATH_MAX> target;
  // Link by link, since realpath() needs a target that exists.
  for (int level = 0; level < kLinkLevels; ++level) {
    const ssize_t length = readlink(path.c_str(), target.data(), target.size());
    if (length < 0) return path;
    const std::string next(target.data(), static_cast<std::size_t>(length));
    path = next.starts_with('/') ? next : FolderOf(path) + "/" + next;
  }
  throw SystemError(ELOOP, "write to", path);
}

void RefuseIfInUse(int fd, const std::string& path) {
  // The other program may have opened the file by its link or by its own name.
  for (const std::string& file : {path, FollowLinks(path)}) {
    const std::string owner_file = OwnerFile(file);
    if (access(owner_file.c_str(), F_OK) == 0) {
      throw InUse(path,
                  " (" + owner_file + " says so; delete it if no program has the file open).");
    }
  }
  // There are two kinds of locks on Linux that know nothing of each other: locks on regions
  // (fcntl), which office programs and file servers use, and locks on the whole file (flock), as in
  // this program.
  struct flock region {};
  region.l_type = F_WRLCK;
  region.l_whence = SEEK_SET;
  if (fcntl(fd, F_GETLK, &region) == 0 && region.l_type != F_UNLCK) {
    // A lock of an open file description belongs to no process.
    throw InUse(path, region.l_pid > 0 ? " (process " + std::to_string(region.l_pid) + ")." : ".");
  }
  // Another run that makes this same check holds the lock for a moment.
  for (int attempt = 0; flock(fd, LOCK_EX | LOCK_NB) != 0; ++attempt) {
    // The file system has no locks, so no program can hold one.
    if (errno != EWOULDBLOCK) return;
    if (attempt == kMomentAttempts) throw InUse(path, ".");
    std::this_thread::sleep_for(kLockInterval);
  }
  // Only asked: two runs may append to one log at the same time.
  flock(fd, LOCK_UN);
}

// Throws unless the file, which is open for appending or could not be opened because of `error`, is
// an ordinary one that may be written and is not in use.
void CheckForAppending(Descriptor& file, int error, const std::string& path) {
  // Asked about the path, since a pipe without a reader cannot even be opened.
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    RequireOrdinaryFile(status.st_mode, "write to", path);
    if (IsWriteProtected(status.st_mode)) {
      file.Close();
      error = EACCES;
    }
  }
  if (!file.IsOpen()) throw SystemError(error, "write to", path);
  RefuseIfInUse(file.Get(), path);
}

// The file that a path means, links followed. A link whose target does not exist is refused:
// writing there would create a file in a place that the user did not name.
std::string TargetOf(const std::string& path) {
  const std::string target = FollowLinks(path);
  struct stat status {};
  if (target != path && lstat(target.c_str(), &status) != 0 && errno == ENOENT) {
    throw Error(error_number::kPathNotFound,
                "Cannot write to " + path + ": It is a link to " + target +
                    ", which does not exist. Delete the link, or put the file back.");
  }
  return target;
}

// O_EXCL refuses a link whose target does not exist, instead of creating the target.
Descriptor OpenOrCreate(const std::string& path) {
  Descriptor file = OpenFile(path, O_WRONLY | O_APPEND);
  if (file.IsOpen() || errno != ENOENT) return file;
  file = OpenFile(path, O_WRONLY | O_APPEND | O_CREAT | O_EXCL, kForAll);
  if (file.IsOpen() || errno != EEXIST) return file;
  return OpenFile(path, O_WRONLY | O_APPEND);
}

FolderEntry EntryOf(int folder, const dirent& entry) {
  // Most file systems tell the kind with the name. A call for each file would cost a network round
  // trip on a share with thousands of files.
  FolderEntry found{entry.d_name, entry.d_type == DT_DIR, entry.d_type == DT_LNK,
                    entry.d_name[0] == '.'};
  struct stat status {};
  if (entry.d_type == DT_UNKNOWN) {
    found.is_link =
        fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
  }
  if (found.is_link || entry.d_type == DT_UNKNOWN) {
    if (fstatat(folder, entry.d_name, &status, 0) == 0) {
      found.is_folder = S_ISDIR(status.st_mode);
      // A dead link is no obstacle; one into a folder without permission is.
    } else if (errno != ENOENT && errno != ENOTDIR && errno != ELOOP) {
      found.obstacle = Reason(errno);
    }
  }
  return found;
}

// Disks by their device, shares by "server:folder" or "//server/share", and folders shared by a
// virtual machine or mounted by the user; not the kernel's own file systems or images of programs.
bool HoldsUserFiles(const mntent& mount) {
  const std::string_view device = mount.mnt_fsname;
  const std::string_view kind = mount.mnt_type;
  if (kind == "squashfs" || kind == "fuse.snapfuse" || kind == "autofs") return false;
  return device.starts_with('/') || device.find(":/") != std::string_view::npos ||
         kind == "fuse.sshfs" || kind == "9p" || kind == "virtiofs" || kind == "vboxsf";
}

std::int64_t Nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

// With the permissions less the umask.
void MakeFolder(const std::string& path, mode_t permissions) {
  if (mkdir(path.c_str(), permissions) == 0) return;
  const int error = errno;
  struct stat status {};
  // Another program may have created it a moment ago.
  const bool exists = error == EEXIST && stat(path.c_str(), &status) == 0;
  if (!exists || !S_ISDIR(status.st_mode)) throw SystemError(error, "create", path);
}

std::string CurrentFolder() {
  std::array<char, PATH_MAX> folder;
  if (!getcwd(folder.data(), folder.size())) throw SystemError(errno, "find", "current folder");
  return folder.data();
}

}  // namespace

std::string PosixFileSystem::DefaultFolder() const {
  // HOME first, as every shell does; the user database also knows people whose HOME is not set.
  if (const char* home = std::getenv("HOME"); home && *home == '/') return AbsolutePath(home);
  std::array<char, 16384> texts;
  passwd record{};
  passwd* found = nullptr;
  getpwuid_r(getuid(), &record, texts.data(), texts.size(), &found);
  return found && *found->pw_dir == '/' ? AbsolutePath(found->pw_dir) : "/";
}

std::string PosixFileSystem::AbsolutePath(std::string_view path) const {
  const std::string whole =
      path.starts_with('/') ? std::string(path) : CurrentFolder() + "/" + std::string(path);
  std::string result;
  for (std::size_t start = 0; start <= whole.size();) {
    const std::size_t end = std::min(whole.find('/', start), whole.size());
    const std::string_view part = std::string_view(whole).substr(start, end - start);
    if (part == "..") {
      // By the text alone, since the folders need not exist. Behind a link this can be another
      // folder than the system would find.
      result.resize(result.empty() ? 0 : result.rfind('/'));
    } else if (!part.empty() && part != ".") {
      result.append("/").append(part);
    }
    start = end + 1;
  }
  return result.empty() ? "/" : result;
}

bool PosixFileSystem::FileExists(const std::string& path) const {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool PosixFileSystem::FolderExists(const std::string& path) const {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool PosixFileSystem::IsOneOf(const std::string& file, std::span<const std::string> others) const {
  struct stat wanted {};
  if (stat(file.c_str(), &wanted) != 0) return false;
  return std::ranges::any_of(others, [&](const std::string& other) {
    struct stat status {};
    return stat(other.c_str(), &status) == 0 && status.st_dev == wanted.st_dev &&
           status.st_ino == wanted.st_ino;
  });
}

std::optional<FileVersion> PosixFileSystem::VersionOf(const std::string& path) const {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    throw SystemError(errno, "read", path);
  }
  return FileVersion{status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
                     Nanoseconds(status.st_ctim)};
}

std::vector<std::string> PosixFileSystem::Drives() const {
  std::vector<std::string> drives{"/"};
  const std::unique_ptr<FILE, int (*)(FILE*)> mounts(setmntent("/proc/self/mounts", "r"),
                                                     &endmntent);
  if (!mounts) return drives;
  mntent mount{};
  std::array<char, 4096> line;
  while (getmntent_r(mounts.get(), &mount, line.data(), line.size())) {
    if (HoldsUserFiles(mount)) drives.emplace_back(mount.mnt_dir);
  }
  std::sort(drives.begin(), drives.end());
  drives.erase(std::unique(drives.begin(), drives.end()), drives.end());
  return drives;
}

std::vector<FolderEntry> PosixFileSystem::List(const std::string& folder) const {
  const std::unique_ptr<DIR, int (*)(DIR*)> open_folder(opendir(folder.c_str()), &closedir);
  if (!open_folder) throw SystemError(errno, "list", folder);
  std::vector<FolderEntry> entries;
  for (;;) {
    // readdir() answers with null at the end and on failure; errno alone tells them apart.
    errno = 0;
    const dirent* entry = readdir(open_folder.get());
    if (!entry) break;
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    entries.push_back(EntryOf(dirfd(open_folder.get()), *entry));
  }
  if (errno != 0) throw SystemError(errno, "list", folder);
  return entries;
}

void PosixFileSystem::ReadFile(const std::string& path, std::vector<std::byte>& content) const {
  ReadStart(path, std::numeric_limits<std::size_t>::max(), content);
}

void PosixFileSystem::ReadStart(const std::string& path, std::size_t most,
                                std::vector<std::byte>& content) const {
  const Descriptor file = OpenFile(path, O_RDONLY);
  if (!file.IsOpen()) throw SystemError(errno, "read", path, Missing::kFile);
  struct stat status {};
  if (fstat(file.Get(), &status) != 0) throw SystemError(errno, "read", path, Missing::kFile);
  RequireOrdinaryFile(status.st_mode, "read", path);

  // The size is a hint: files of /proc say 0, and a file may grow. One byte more than it tells
  // finds the end without growing the buffer.
  content.resize(std::min(most, static_cast<std::size_t>(status.st_size) + 1));
  std::size_t size = 0;
  while (size < most) {
    if (size == content.size()) {
      content.resize(std::min(most, size + std::max<std::size_t>(size, 65536)));
    }
    const ssize_t count = read(file.Get(), content.data() + size, content.size() - size);
    if (count == 0) break;
    if (count > 0) {
      size += static_cast<std::size_t>(count);
      // It had its full size, and not the one byte more that was asked for.
      if (size == static_cast<std::size_t>(status.st_size) && size < content.size()) break;
    } else if (errno != EINTR) {
      throw SystemError(errno, "read", path, Missing::kFile);
    }
  }
  content.resize(size);
}

std::unique_ptr<AppendFile> PosixFileSystem::OpenForAppending(const std::string& path) {
  Descriptor file = OpenOrCreate(path);
  CheckForAppending(file, errno, path);
  return std::make_unique<PosixAppendFile>(std::move(file), path);
}

void PosixFileSystem::CheckWritable(const std::string& path) {
  Descriptor file = OpenFile(path, O_WRONLY | O_APPEND);
  if (file.IsOpen() || errno != ENOENT) {
    CheckForAppending(file, errno, path);
  } else {
    // A new file is tried as the run will make it: under a name of its own, which is deleted again.
    PosixReplacementFile(TargetOf(path), kForUser);
  }
}

std::unique_ptr<ReplacementFile> PosixFileSystem::Replace(const std::string& path) {
  return std::make_unique<PosixReplacementFile>(TargetOf(path), kForAll);
}

std::unique_ptr<ReplacementFile> PosixFileSystem::ReplacePrivately(const std::string& path) {
  return std::make_unique<PosixReplacementFile>(TargetOf(path), kForUser);
}

// A program that replaces the file while it holds the lock leaves the waiting ones with a lock on
// the old file, which has no name any more. They try again with the file that has the name now.
std::unique_ptr<FileLock> PosixFileSystem::Lock(const std::string& path) {
  const auto deadline = std::chrono::steady_clock::now() + kLockPatience;
  for (;;) {
    Descriptor file = OpenFile(path, O_RDWR | O_CREAT, kForUser);
    struct stat locked {};
    struct stat named {};
    if (!file.IsOpen() || fstat(file.Get(), &locked) != 0) {
      throw SystemError(errno, "write to", path);
    }
    RequireOrdinaryFile(locked.st_mode, "write to", path);
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
      if (std::chrono::steady_clock::now() > deadline) {
        throw Error(error_number::kPermissionDenied, LockedText(path));
      };
      std::this_thread::sleep_for(kLockInterval);
    } else if (stat(path.c_str(), &named) == 0 && named.st_ino == locked.st_ino &&
               named.st_dev == locked.st_dev) {
      return std::make_unique<PosixFileLock>(std::move(file));
    }
  }
}

void PosixFileSystem::CreateFolder(const std::string& path) {
  MakeFolder(path, 0777);
}

void PosixFileSystem::CreatePrivateFolder(const std::string& path) {
  MakeFolder(path, 0700);
}

void PosixFileSystem::DeleteFile(const std::string& path) {
  if (unlink(path.c_str()) != 0) throw SystemError(errno, "delete", path, Missing::kFile);
}

}  // namespace korvex
