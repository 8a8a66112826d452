#include "platform/posix/temporary_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#include "platform/posix/posix_io.h"

namespace korvex {
namespace {

std::string HexDigits(std::uint32_t number) {
  char digits[2 * sizeof number + 1];
  std::snprintf(digits, sizeof digits, "%08x", number);
  return digits;
}

// A short, constant mark of the host: the hash FNV-1a over its name.
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

// A program of the administrator gives its temporary file to the owner of the former file before
// it renames it, so such a file may belong to somebody else.
bool IsOurs(const struct stat& status) {
  return status.st_uid == geteuid() || geteuid() == 0;
}

// Network file systems lock only what is open for writing.
Descriptor OpenLeftover(const std::string& path) {
  Descriptor file = OpenFile(path, O_RDWR | O_NOFOLLOW);
  return file.IsOpen() ? std::move(file) : OpenFile(path, O_RDONLY | O_NOFOLLOW);
}

void RemoveUnlessHeld(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || !IsOurs(status)) return;
  const Descriptor file = OpenLeftover(path);
  if (!file.IsOpen() || flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return;
  // Its owner may have renamed it between the two calls.
  if (fstat(file.Get(), &status) != 0 || !LeadsTo(path, status)) return;
  unlink(path.c_str());
}

}  // namespace

std::string TemporaryName(std::string_view prefix) {
  std::random_device random;
  return std::string(prefix) + MachineMark() + "-" + HexDigits(random());
}

bool HoldTemporary(int fd, const std::string& path) {
  // Without locks in the file system nothing is lost: no other program gets the lock there, so none
  // removes the file.
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
  struct stat status {};
  return fstat(fd, &status) == 0 && LeadsTo(path, status);
}

void RemoveLeftovers(const std::string& folder, std::string_view prefix) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open_folder(opendir(folder.c_str()), &closedir);
  if (!open_folder) return;
  const std::string marked = std::string(prefix) + MachineMark() + "-";
  // Removing entries while readdir() walks over them may skip others: collect first.
  std::vector<std::string> found;
  while (const dirent* entry = readdir(open_folder.get())) {
    if (std::string_view(entry->d_name).starts_with(marked)) found.push_back(entry->d_name);
  }
  for (const std::string& name : found) RemoveUnlessHeld(folder + "/" + name);
}

}  // namespace korvex
