#include "platform/posix/file_rights.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string_view>

namespace korvex {
namespace {

constexpr char kAccessList[] = "system.posix_acl_access";

// Attributes that the system keeps about the former content.
constexpr std::string_view kOfTheContent[] = {"security.capability", "security.ima",
                                              "security.evm"};

constexpr mode_t kAll = S_IRWXO;
constexpr mode_t kOfGroup = S_IRWXG;
constexpr mode_t kOfOthers = S_IRWXO;

// An access control list as the system stores it, little-endian:
//
//   offset 0   4 bytes   version, 2
//   then 8 bytes an entry:
//          0   2 bytes   kind
//          2   2 bytes   permissions
//          4   4 bytes   number of the user or group
constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kEntrySize = 8;
constexpr std::size_t kPermissionsAt = 2;
enum EntryKind : unsigned {
  kUser = 0x02,
  kOwningGroup = 0x04,
  kGroup = 0x08,
  kMask = 0x10,
  kOthers = 0x20,
};

unsigned Number16(const std::string& bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]) |
         static_cast<unsigned>(static_cast<unsigned char>(bytes[at + 1])) << 8;
}

// Calls `take` with kind and permissions of every entry, and where the entry begins.
template <class Take>
void ForEachEntry(const std::string& list, Take take) {
  for (std::size_t at = kHeaderSize; at + kEntrySize <= list.size(); at += kEntrySize) {
    take(Number16(list, at), static_cast<mode_t>(Number16(list, at + kPermissionsAt)) & kAll, at);
  }
}

// The permissions (mode) that replace an access list. Users and groups with an entry of their own
// fall back to those of the owning group or the others then, so these get no more than every entry
// allows. The group bits of `mode` are no help: under a list they are the mask, the most that any
// entry can give.
mode_t WithoutList(mode_t mode, const std::string& list) {
  mode_t mask = kAll;
  mode_t named = kAll;
  mode_t group = 0;
  mode_t others = 0;
  ForEachEntry(list, [&](unsigned kind, mode_t permissions, std::size_t) {
    if (kind == kMask) mask = permissions;
    if (kind == kUser || kind == kGroup) named &= permissions;
    if (kind == kOwningGroup) group = permissions;
    if (kind == kOthers) others = permissions;
  });
  mode &= ~(kOfGroup | kOfOthers);
  return mode | (group & mask & named) << 3 | (others & mask & named);
}

// The list for a file that gets another owning group. Its members counted among the others so far,
// or had an entry of their own.
std::string ForAnotherGroup(std::string list, mode_t mode) {
  const mode_t least = WithoutList(mode, list);
  ForEachEntry(list, [&](unsigned kind, mode_t permissions, std::size_t at) {
    if (kind != kOwningGroup) return;
    list[at + kPermissionsAt] = static_cast<char>(permissions & least >> 3 & least & kAll);
  });
  return list;
}

mode_t ForAnotherGroup(mode_t mode) {
  return (mode & ~kOfGroup) | (mode & kOfGroup & (mode & kOfOthers) << 3);
}

// None when there is no such attribute, or it cannot be read.
std::optional<std::string> Attribute(const std::string& path, const char* name) {
  for (;;) {
    const ssize_t size = getxattr(path.c_str(), name, nullptr, 0);
    if (size < 0) return {};
    std::string value(static_cast<std::size_t>(size), '\0');
    const ssize_t read = getxattr(path.c_str(), name, value.data(), value.size());
    if (read >= 0) {
      value.resize(static_cast<std::size_t>(read));
      return value;
    }
    if (errno != ERANGE) return {};  // else it grew between the two calls
  }
}

std::vector<std::string> AttributeNames(const std::string& path) {
  std::string list;
  for (;;) {
    const ssize_t size = listxattr(path.c_str(), nullptr, 0);
    if (size <= 0) return {};
    list.resize(static_cast<std::size_t>(size));
    const ssize_t read = listxattr(path.c_str(), list.data(), list.size());
    if (read >= 0) {
      list.resize(static_cast<std::size_t>(read));
      break;
    }
    if (errno != ERANGE) return {};
  }
  std::vector<std::string> names;
  for (std::size_t start = 0; start < list.size(); start += names.back().size() + 1) {
    names.emplace_back(list.c_str() + start);
  }
  return names;
}

// False when a list stays that cannot be taken away.
bool RemoveList(int fd) {
  return fremovexattr(fd, kAccessList) == 0 || errno == ENODATA || errno == ENOTSUP;
}

}  // namespace

FileRights::FileRights(const std::string& path, const struct stat& status)
    : mode_(status.st_mode & mode_t{07777}),
      owner_(status.st_uid),
      group_(status.st_gid),
      access_list_(Attribute(path, kAccessList).value_or("")) {
  for (std::string& name : AttributeNames(path)) {
    if (name == kAccessList || std::ranges::count(kOfTheContent, name) > 0) continue;
    std::optional<std::string> value = Attribute(path, name.c_str());
    if (value) attributes_.emplace_back(std::move(name), std::move(*value));
  }
}

int FileRights::GiveTo(int fd) const {
  // From here on each right that cannot be given is taken from `mode` and `list`. They are put into
  // force last, in this order: chown() clears set-user-ID bits and so must come before the mode,
  // and setting a list changes the group bits of the mode.
  mode_t mode = mode_;
  std::string list = access_list_;
  // Only the administrator can give a file away; a member can still keep the group.
  if (fchown(fd, owner_, group_) != 0) {
    // Under this user's own name such a bit would let others act as this user.
    mode &= ~mode_t{S_ISUID};
    if (fchown(fd, static_cast<uid_t>(-1), group_) != 0) {
      mode &= ~mode_t{S_ISGID};
      if (list.empty()) mode = ForAnotherGroup(mode);
      list = ForAnotherGroup(std::move(list), mode);
    }
  }
  for (const auto& [name, value] : attributes_) {
    const bool given = fsetxattr(fd, name.c_str(), value.data(), value.size(), 0) == 0;
    // Access lists of other kinds (NFSv4), which can restrict more than the mode.
    if (!given && name.starts_with("system.")) mode &= ~(kOfGroup | kOfOthers);
  }
  // The folder may have given the new file a list of its own, which the mode would put into force.
  if (list.empty() ? !RemoveList(fd)
                   : fsetxattr(fd, kAccessList, list.data(), list.size(), 0) != 0) {
    mode = RemoveList(fd) ? WithoutList(mode, list) : mode & ~(kOfGroup | kOfOthers);
  }
  // File systems without permissions refuse this, and lose nothing by it.
  return fchmod(fd, mode) == 0 || errno == EPERM || errno == ENOTSUP ? 0 : errno;
}

}  // namespace korvex
