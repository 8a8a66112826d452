// Settings in a text file (settings/ini_document.h) that the user may edit and several programs
// share.
//
// A missing file holds no settings; the first save creates it, private to the user, with its
// folders. Every call sees what is in the file at that moment; the file is read again only when it
// changed. Saving locks the file, so that no program undoes what another one saves, and replaces it
// as a whole. Errors are the file system's; 70 too when another program keeps the file locked.
#pragma once

#include <optional>
#include <string>

#include "platform/file_system.h"
#include "platform/settings_store.h"
#include "settings/ini_document.h"

namespace korvex {

class IniSettingsStore : public SettingsStore {
 public:
  // `files` must outlive the store.
  IniSettingsStore(FileSystem& files, const std::string& path)
      : files_(files), path_(files.AbsolutePath(path)) {}

  std::optional<std::string> Get(std::string_view section, std::string_view key) override;
  void Save(std::string_view section, std::string_view key, std::string_view value) override;
  void Delete(std::string_view section, std::string_view key) override;

 private:
  // Reads the file, unless it is known to be unchanged.
  void Refresh();
  // Replaces the file by the document.
  void Write();

  FileSystem& files_;
  std::string path_;
  IniDocument document_;
  std::optional<FileVersion> version_;  // of the file that the document was read from
  // The file changed so lately that the next change could bear the same time.
  bool may_change_unseen_ = true;
};

}  // namespace korvex
