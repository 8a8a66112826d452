// Who may do what with a file: owner, group, permissions and access control list, with the extended
// attributes that people and programs have put on it.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace korvex {

class FileRights {
 public:
  // Those of the file that the path leads to; `status` is its own.
  FileRights(const std::string& path, const struct stat& status);

  // Gives them to an open file that nobody else can reach yet. Where the file cannot be given all
  // of them it gets less, never more: nobody may do with it what was not allowed before. Returns 0,
  // or the errno of the call that left it without permissions of its own.
  int GiveTo(int fd) const;

 private:
  mode_t mode_;
  uid_t owner_;
  gid_t group_;
  std::string access_list_;  // as the system stores it; empty when there is none
  std::vector<std::pair<std::string, std::string>> attributes_;
};

}  // namespace korvex
