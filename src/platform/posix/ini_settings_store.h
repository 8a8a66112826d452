// Settings in a text file (settings/ini_document.h) that the user may edit and several programs
// share.
//
// A missing file holds no settings; the first save creates it, private to the user, with its
// folders. Every read sees what is in the file at that moment; the file is read again only when it
// changed. Saving locks the file, so that no program undoes what another one saves, and replaces it
// as a whole. Errors are the file system's; 70 too when another program keeps the file locked.
#pragma once

#include <sys/stat.h>

#include <ctime>
#include <functional>
#include <string>

#include "platform/posix/posix_file_system.h"
#include "platform/posix/posix_io.h"
#include "platform/settings_store.h"
#include "settings/ini_document.h"

namespace korvex {

class IniSettingsStore : public SettingsStore {
 public:
  // "$XDG_CONFIG_HOME/korvex/korvex.ini", by default in ".config" of the home folder.
  static std::string PerUserPath(const PosixFileSystem& files);

  // `files` must outlive the store.
  IniSettingsStore(PosixFileSystem& files, const std::string& path);

  std::optional<std::string> Get(std::string_view section, std::string_view key) override;
  void Save(std::string_view section, std::string_view key, std::string_view value) override;
  void Delete(std::string_view section, std::string_view key) override;

 private:
  // Tells one content of the file from another one.
  struct Version {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1;
    timespec modified{};
    timespec changed{};

    bool operator==(const Version& other) const;
  };

  void Refresh();
  void CreateFolders() const;
  Descriptor Lock() const;
  void Write();

  PosixFileSystem& files_;
  std::string path_;
  IniDocument document_;
  Version version_;
  bool may_change_unseen_ = true;
};

}  // namespace korvex
