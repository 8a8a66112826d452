// Settings in the user's registry, where the platform's own per-user settings functions keep them:
// every section is a key below that of the application, every setting a text in it.
#pragma once

#include <string>

#include "platform/settings_store.h"

namespace korvex {

// Names ignore letter case, as the registry does. A value that is no text, which another program
// must have put there, is error 75.
class RegistrySettingsStore : public SettingsStore {
 public:
  // Below HKEY_CURRENT_USER. A test names a key of its own.
  static constexpr char kPerUserKey[] = "Software\\VB and VBA Program Settings\\KORVEX";
  explicit RegistrySettingsStore(std::string key = kPerUserKey) : key_(std::move(key)) {}

  std::optional<std::string> Get(std::string_view section, std::string_view key) override;
  void Save(std::string_view section, std::string_view key, std::string_view value) override;
  void Delete(std::string_view section, std::string_view key) override;

 private:
  // The registry key of a section, below HKEY_CURRENT_USER.
  std::string SectionKey(std::string_view section) const;

  std::string key_;
};

}  // namespace korvex
