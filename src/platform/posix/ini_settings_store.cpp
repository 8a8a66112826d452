#include "platform/posix/ini_settings_store.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

namespace korvex {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kLockPatience{5};
constexpr std::chrono::milliseconds kLockInterval{5};

// The coarsest time stamps (memory cards) count in steps of two seconds: within such a step a file
// can change without its time telling so.
constexpr time_t kTimeStampStep = 2;

bool SameTime(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

}  // namespace

std::string IniSettingsStore::PerUserPath(const PosixFileSystem& files) {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const std::string folder =
      config && *config == '/' ? std::string(config) : files.DefaultFolder() + "/.config";
  return files.AbsolutePath(folder + "/korvex/korvex.ini");
}

IniSettingsStore::IniSettingsStore(PosixFileSystem& files, const std::string& path)
    : files_(files), path_(files.AbsolutePath(path)) {}

bool IniSettingsStore::Version::operator==(const Version& other) const {
  return device == other.device && inode == other.inode && size == other.size &&
         SameTime(modified, other.modified) && SameTime(changed, other.changed);
}

std::optional<std::string> IniSettingsStore::Get(std::string_view section, std::string_view key) {
  Refresh();
  return document_.Get(section, key);
}

void IniSettingsStore::Save(std::string_view section, std::string_view key,
                            std::string_view value) {
  if (Get(section, key) == value) return;
  CreateFolders();
  const Descriptor lock = Lock();
  Refresh();
  document_.Set(section, key, value);
  Write();
}

void IniSettingsStore::Delete(std::string_view section, std::string_view key) {
  const auto require = [&](bool found) {
    if (found) return;
    throw Error(error_number::kInvalidCall,
                "There is no setting \"" + std::string(key) + "\" in " + path_ + ".");
  };
  require(Get(section, key).has_value());
  const Descriptor lock = Lock();
  Refresh();
  require(document_.Remove(section, key));
  Write();
}

void IniSettingsStore::Refresh() {
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) throw SystemError(errno, "read", path_);
    document_ = {};
    version_ = {};
    return;
  }
  const Version version{status.st_dev, status.st_ino, status.st_size, status.st_mtim,
                        status.st_ctim};
  if (version == version_ && !may_change_unseen_) return;

  version_ = {};  // whatever fails from here on, the next call reads again
  std::vector<std::byte> content;
  const time_t now = std::time(nullptr);
  files_.ReadFile(path_, content);
  document_ = IniDocument({reinterpret_cast<const char*>(content.data()), content.size()});
  version_ = version;
  may_change_unseen_ = version.modified.tv_sec + kTimeStampStep >= now;
}

void IniSettingsStore::CreateFolders() const {
  const std::string folder = FolderOf(path_);
  for (std::size_t end = 0; end != std::string::npos;) {
    end = folder.find('/', end + 1);
    const std::string level = folder.substr(0, end);
    if (mkdir(level.c_str(), 0700) != 0 && !files_.FolderExists(level)) {
      throw SystemError(errno, "create", level);
    }
  }
}

// Locks the file itself, which needs to exist for that. A program that had to wait may hold the
// lock of a file that has been replaced meanwhile, and begins anew.
Descriptor IniSettingsStore::Lock() const {
  const auto deadline = steady_clock::now() + kLockPatience;
  for (;;) {
    Descriptor file = OpenFile(path_, O_RDWR | O_CREAT, 0600);
    struct stat locked {};
    struct stat current {};
    if (!file.IsOpen() || fstat(file.Get(), &locked) != 0) {
      throw SystemError(errno, "write to", path_);
    }
    RequireOrdinaryFile(locked.st_mode, "write to", path_);
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
      if (steady_clock::now() > deadline) {
        throw Error(error_number::kPermissionDenied,
                    "Cannot write to " + path_ + ": Another program keeps the file locked.");
      }
      std::this_thread::sleep_for(kLockInterval);
    } else if (stat(path_.c_str(), &current) == 0 && current.st_ino == locked.st_ino &&
               current.st_dev == locked.st_dev) {
      return file;
    }
  }
}

void IniSettingsStore::Write() {
  version_ = {};
  const std::string text = document_.Text();
  const std::unique_ptr<ReplacementFile> file = files_.Replace(path_, 0600);
  file->Write(std::as_bytes(std::span(text)));
  file->Commit();
}

}  // namespace korvex
