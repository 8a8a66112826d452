// What the Linux implementations share below the file system: open files, and the errors that a
// system call's errno stands for.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/error.h"

namespace korvex {

// Owns one file descriptor; -1 is none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor() { Close(); }

  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }
  // The caller closes it then.
  int Release();
  void Close();

 private:
  int fd_ = -1;
};

// What a missing path means to the operation that failed on it: ENOENT is error 53 when a file was
// looked for in a folder that exists, and 76 when a folder was.
enum class Missing { kFile, kFolder };

// "Cannot read /data/run1/x.xls: Permission denied." `action` is the verb ("read").
Error SystemError(int error, std::string_view action, const std::string& path,
                  Missing missing = Missing::kFolder);

// What an errno means. In English like everything around it, whatever language a toolkit has chosen
// for the process.
std::string Reason(int error);

// Error 75 unless `mode` (of stat) is that of an ordinary file.
void RequireOrdinaryFile(mode_t mode, std::string_view action, const std::string& path);

// Whether nobody at all may write. The administrator could write all the same, but must not.
bool IsWriteProtected(mode_t mode);

// Opens with close-on-exec and without ever waiting (a named pipe waits for its other end);
// repeats when a signal came in between. Returns a closed Descriptor with errno set on failure.
Descriptor OpenFile(const std::string& path, int flags, unsigned mode = 0);

// Writes all of it, or throws the error of the call that failed.
void WriteAll(int fd, std::span<const std::byte> bytes, const std::string& path);

// The folder that holds a path's last component: "/a" for "/a/b", "." for "b", "/" for "/b".
std::string FolderOf(const std::string& path);

}  // namespace korvex
