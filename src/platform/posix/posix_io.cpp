#include "platform/posix/posix_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace korvex {
namespace {

bool IsFolder(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

int ErrorNumber(int error, const std::string& path, Missing missing) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return error_number::kDiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
    case ETXTBSY:
      return error_number::kPermissionDenied;
    case ENOENT:
      // The system has one code for both a missing file and a missing folder above it.
      return missing == Missing::kFile && IsFolder(FolderOf(path)) ? error_number::kFileNotFound
                                                                   : error_number::kPathNotFound;
    case ENOTDIR:
      return error_number::kPathNotFound;
    case EIO:
      return error_number::kDeviceIo;
    case ENODEV:
    case ENXIO:
      return error_number::kDeviceUnavailable;
    default:
      return error_number::kPathFileAccess;
  }
}

}  // namespace

std::string Reason(int error) {
  const char* text = strerrordesc_np(error);
  return text ? text : "Error " + std::to_string(error);
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) {
    Close();
    fd_ = other.Release();
  }
  return *this;
}

int Descriptor::Release() {
  return std::exchange(fd_, -1);
}

void Descriptor::Close() {
  if (IsOpen()) close(Release());
}

Error SystemError(int error, std::string_view action, const std::string& path, Missing missing) {
  return Error(ErrorNumber(error, path, missing),
               "Cannot " + std::string(action) + " " + path + ": " + Reason(error) + ".");
}

void RequireOrdinaryFile(mode_t mode, std::string_view action, const std::string& path) {
  if (S_ISREG(mode)) return;
  throw Error(error_number::kPathFileAccess,
              "Cannot " + std::string(action) + " " + path + ": It is " +
                  (S_ISDIR(mode) ? "a folder." : "not an ordinary file."));
}

bool IsWriteProtected(mode_t mode) {
  return (mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

Descriptor OpenFile(const std::string& path, int flags, unsigned mode) {
  int fd = -1;
  do {
    // Programs that are started do not inherit the file; a pipe does not make us wait for its other
    // end; a terminal does not become this process's own.
    fd = open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
  } while (fd < 0 && errno == EINTR);
  return Descriptor(fd);
}

void WriteAll(int fd, std::span<const std::byte> bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      throw SystemError(errno, "write to", path, Missing::kFile);
    }
  }
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, slash == 0 ? 1 : slash);
}

}  // namespace korvex
