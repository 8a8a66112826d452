// Settings in a text file (settings/ini_document.h) that the user may edit and several programs
// share.
//
// A missing file holds no settings; the first save creates it with its folders. Every call sees
// what is in the file at that moment. Saving keeps other programs out by a file "NAME.lock" beside
// it, which the system takes away with the program that made it, and replaces the file as a whole.
// Errors are the file system's; 70 too when another program keeps the file locked.
#pragma once

#include <string>

#include "platform/settings_store.h"
#include "platform/windows/windows_file_system.h"
#include "settings/ini_document.h"

namespace korvex {

class IniSettingsStore : public SettingsStore {
 public:
  // `files` must outlive the store.
  IniSettingsStore(WindowsFileSystem& files, const std::string& path)
      : files_(files), path_(files.AbsolutePath(path)) {}

  std::optional<std::string> Get(std::string_view section, std::string_view key) override;
  void Save(std::string_view section, std::string_view key, std::string_view value) override;
  void Delete(std::string_view section, std::string_view key) override;

 private:
  IniDocument Read() const;
  void Write(const IniDocument& document);
  void CreateFolders(const std::string& folder);

  WindowsFileSystem& files_;
  std::string path_;
};

}  // namespace korvex
