#include "platform/posix/leftovers.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <system_error>
#include <vector>

#include "platform/posix/posix_io.h"

namespace korvex {
namespace {

std::string HexDigits(std::uint32_t number) {
  char digits[2 * sizeof number + 1];
  std::snprintf(digits, sizeof digits, "%08x", number);
  return digits;
}

// FNV-1a over the host's name.
std::string MachineMark() {
  std::array<char, 256> host{};
  gethostname(host.data(), host.size() - 1);
  std::uint32_t hash = 2166136261u;
  for (const char* c = host.data(); *c != '\0'; ++c) {
    hash = (hash ^ static_cast<unsigned char>(*c)) * 16777619u;
  }
  return HexDigits(hash);
}

bool LeadsTo(const std::string& path, const struct stat& open_file) {
  struct stat named {};
  return lstat(path.c_str(), &named) == 0 && named.st_dev == open_file.st_dev &&
         named.st_ino == open_file.st_ino;
}

// Programs of the administrator give a temporary file to its later owner before it is renamed.
bool IsOurs(const struct stat& status) {
  return status.st_uid == geteuid() || (geteuid() == 0 && S_ISREG(status.st_mode));
}

// Network file systems lock only what is open for writing.
Descriptor OpenLeftover(const std::string& path) {
  Descriptor file = OpenFile(path, O_RDWR | O_NOFOLLOW);
  return file.IsOpen() ? std::move(file) : OpenFile(path, O_RDONLY | O_NOFOLLOW);
}

void RemoveUnlessHeld(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 || !IsOurs(status)) return;
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return;
  const Descriptor file = OpenLeftover(path);
  if (!file.IsOpen() || flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return;
  // Its owner may have renamed it between the two calls.
  if (fstat(file.Get(), &status) != 0 || !LeadsTo(path, status)) return;
  if (S_ISDIR(status.st_mode)) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  } else {
    unlink(path.c_str());
  }
}

}  // namespace

std::string TemporaryName(std::string_view prefix) {
  std::random_device random;
  return std::string(prefix) + MachineMark() + "-" + HexDigits(random());
}

bool HoldTemporary(int fd, const std::string& path) {
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
  struct stat status {};
  return fstat(fd, &status) == 0 && LeadsTo(path, status);
}

void RemoveLeftovers(const std::string& folder, std::string_view prefix) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open_folder(opendir(folder.c_str()), &closedir);
  if (!open_folder) return;
  const std::string marked = std::string(prefix) + MachineMark() + "-";
  std::vector<std::string> found;
  while (const dirent* entry = readdir(open_folder.get())) {
    if (std::string_view(entry->d_name).starts_with(marked)) found.push_back(entry->d_name);
  }
  for (const std::string& name : found) RemoveUnlessHeld(folder + "/" + name);
}

}  // namespace korvex
