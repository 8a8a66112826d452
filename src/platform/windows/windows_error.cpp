#include "platform/windows/windows_error.h"

#include <algorithm>
#include <iterator>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace korvex {
namespace {

// Not in every edition of the headers.
constexpr DWORD kQuotaExceeded = 1295;
constexpr DWORD kVirusInfected = 225;
constexpr DWORD kVirusDeleted = 226;
constexpr DWORD kCloudNotRunning = 362;
constexpr DWORD kCloudUnreachable = 388;
constexpr DWORD kCloudFailed = 389;

struct Cause {
  int number;
  const char* text;
};

constexpr Cause kNone{error_number::kPathNotFound, "No such file or directory"};
constexpr Cause kDenied{error_number::kPermissionDenied, "Permission denied"};
constexpr Cause kReadOnly{error_number::kPermissionDenied, "Read-only file system"};
constexpr Cause kInUse{error_number::kPermissionDenied, "The file is in use by another program"};
constexpr Cause kFull{error_number::kDiskFull, "No space left on device"};
constexpr Cause kIo{error_number::kDeviceIo, "Input/output error"};
constexpr Cause kNotReady{error_number::kDeviceUnavailable, "The device is not ready"};

constexpr Cause kAway{error_number::kDeviceUnavailable, "The file server does not answer"};
constexpr Cause kInTheCloud{error_number::kDeviceUnavailable,
                            "The file is stored online and cannot be fetched now"};
constexpr Cause kVirus{error_number::kPermissionDenied,
                       "The virus scanner keeps the file from being opened"};

constexpr struct {
  DWORD code;
  Cause cause;
} kCauses[] = {
    {ERROR_FILE_NOT_FOUND, kNone},
    {ERROR_PATH_NOT_FOUND, kNone},
    {ERROR_BAD_NETPATH, {error_number::kPathNotFound, "The network path was not found"}},
    {ERROR_BAD_NET_NAME, {error_number::kPathNotFound, "The share was not found"}},
    {ERROR_DIRECTORY, {error_number::kPathNotFound, "Not a directory"}},
    {ERROR_INVALID_NAME, {error_number::kPathFileAccess, "Invalid file name"}},
    {ERROR_BAD_PATHNAME, {error_number::kPathFileAccess, "Invalid file name"}},
    {ERROR_FILENAME_EXCED_RANGE, {error_number::kPathFileAccess, "File name too long"}},
    {ERROR_FILE_EXISTS, {error_number::kPathFileAccess, "File exists"}},
    {ERROR_ALREADY_EXISTS, {error_number::kPathFileAccess, "File exists"}},
    {ERROR_FILE_TOO_LARGE, {error_number::kPathFileAccess, "File too large"}},
    {ERROR_INVALID_HANDLE, {error_number::kPathFileAccess, "Bad file descriptor"}},
    {ERROR_BROKEN_PIPE, {error_number::kPathFileAccess, "Broken pipe"}},
    {ERROR_NO_DATA, {error_number::kPathFileAccess, "Broken pipe"}},
    {ERROR_ACCESS_DENIED, kDenied},
    {ERROR_NETWORK_ACCESS_DENIED, kDenied},
    {ERROR_PRIVILEGE_NOT_HELD, kDenied},
    {ERROR_LOGON_FAILURE, kDenied},
    {ERROR_WRITE_PROTECT, kReadOnly},
    {ERROR_SHARING_VIOLATION, kInUse},
    {ERROR_LOCK_VIOLATION, kInUse},
    {ERROR_USER_MAPPED_FILE, kInUse},
    {ERROR_DELETE_PENDING, kInUse},
    {ERROR_HANDLE_DISK_FULL, kFull},
    {ERROR_DISK_FULL, kFull},
    {kQuotaExceeded, kFull},
    {ERROR_CRC, kIo},
    {ERROR_SEEK, kIo},
    {ERROR_SECTOR_NOT_FOUND, kIo},
    {ERROR_WRITE_FAULT, kIo},
    {ERROR_READ_FAULT, kIo},
    {ERROR_GEN_FAILURE, kIo},
    {ERROR_IO_DEVICE, kIo},
    {ERROR_UNEXP_NET_ERR, kIo},
    {ERROR_NETNAME_DELETED, kIo},
    {ERROR_FILE_CORRUPT, kIo},
    {ERROR_DISK_CORRUPT, kIo},
    {ERROR_INVALID_DRIVE, kNotReady},
    {ERROR_BAD_UNIT, kNotReady},
    {ERROR_NOT_READY, kNotReady},
    {ERROR_DEV_NOT_EXIST, kNotReady},
    {ERROR_NO_MEDIA_IN_DRIVE, kNotReady},
    {ERROR_UNRECOGNIZED_MEDIA, kNotReady},
    {ERROR_UNRECOGNIZED_VOLUME, kNotReady},
    {ERROR_DEVICE_NOT_CONNECTED, kNotReady},
    {ERROR_REM_NOT_LIST, kAway},
    {ERROR_SEM_TIMEOUT, kAway},
    {ERROR_BAD_NET_RESP, kAway},
    {ERROR_VC_DISCONNECTED, kAway},
    {ERROR_CONNECTION_UNAVAIL, kAway},
    {ERROR_CONNECTION_ABORTED, kAway},
    {ERROR_NO_NETWORK, kAway},
    {ERROR_NO_NET_OR_BAD_PATH, kAway},
    {ERROR_NETWORK_BUSY, {error_number::kDeviceUnavailable, "The file server is busy"}},
    {ERROR_SESSION_CREDENTIAL_CONFLICT,
     {error_number::kPermissionDenied,
      "This computer is signed in to the file server under another name"}},
    {kCloudNotRunning, kInTheCloud},
    {kCloudUnreachable, kInTheCloud},
    {kCloudFailed, kInTheCloud},
    {kVirusInfected, kVirus},
    {kVirusDeleted, kVirus},
    {ERROR_NETWORK_UNREACHABLE, {error_number::kDeviceUnavailable, "Network is unreachable"}},
    {ERROR_HOST_UNREACHABLE, {error_number::kDeviceUnavailable, "No route to host"}},
};

}  // namespace

std::string SystemText(std::uint32_t code) {
  constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  wchar_t text[512];
  DWORD length = 0;
  // In English like the rest of the message, or else as the user's system says it.
  for (const DWORD language : {DWORD{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}, DWORD{0}}) {
    length = FormatMessageW(kFlags, nullptr, code, language, text, std::size(text), nullptr);
    if (length != 0) break;
  }
  // The system's texts end with a full stop and a line break.
  while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) --length;
  return length > 0 ? FromWide({text, length}) : "System error " + std::to_string(code);
}

Error SystemError(std::uint32_t code, std::string_view action, const std::string& path,
                  Missing missing) {
  const auto* known = std::ranges::find(kCauses, code, [](const auto& c) { return c.code; });
  const bool is_known = known != std::end(kCauses);
  int number = is_known ? known->cause.number : error_number::kPathFileAccess;
  if (code == ERROR_FILE_NOT_FOUND && missing == Missing::kFile) {
    number = error_number::kFileNotFound;
  }
  return Error(number, "Cannot " + std::string(action) + " " + path + ": " +
                           (is_known ? known->cause.text : SystemText(code)) + ".");
}

Error InUse(const std::string& path, const std::string& witness) {
  return Error(error_number::kPermissionDenied,
               "Cannot write to " + path + ": The file is in use by another program" + witness);
}

}  // namespace korvex
