// The settings of one call of a program: its changes hide the values of another store, which is not
// changed until Keep.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "platform/settings_store.h"

namespace korvex {

class OverlaySettingsStore : public SettingsStore {
 public:
  // `below` must outlive the overlay.
  explicit OverlaySettingsStore(SettingsStore& below) : below_(below) {}

  // As this call has changed it, or else from the store below.
  std::optional<std::string> Get(std::string_view section, std::string_view key) override;
  // Both hold for this call alone, until Keep.
  void Save(std::string_view section, std::string_view key, std::string_view value) override;
  void Delete(std::string_view section, std::string_view key) override;

  // Makes every change of this call in the store below. The changes still hold for this call when
  // another program changes the store.
  void Keep();

 private:
  struct Change {
    std::string section;
    std::string key;
    std::optional<std::string> value;  // none: deleted
  };
  using Name = std::pair<std::string, std::string>;  // section and key, upper-cased

  void Put(std::string_view section, std::string_view key, std::optional<std::string> value);

  SettingsStore& below_;
  std::map<Name, Change> changes_;
};

}  // namespace korvex
