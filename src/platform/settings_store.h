// The per-user settings store: texts under a section and a key of the application KORVEX.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvex {

// Section and key names ignore letter case, values keep it. Every call goes to the store, so that
// two running programs see each other's changes. A store that cannot be read or written raises the
// file system's error (70, 75, 61 …).
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;

  // No value when the key is absent; a stored empty text is a value.
  virtual std::optional<std::string> Get(std::string_view section, std::string_view key) = 0;
  virtual void Save(std::string_view section, std::string_view key, std::string_view value) = 0;
  // Error 5 when the key is absent.
  virtual void Delete(std::string_view section, std::string_view key) = 0;
};

}  // namespace korvex
