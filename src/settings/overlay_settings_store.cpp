#include "settings/overlay_settings_store.h"

#include "platform/error.h"
#include "text/text.h"

namespace korvex {

std::optional<std::string> OverlaySettingsStore::Get(std::string_view section,
                                                     std::string_view key) {
  const auto change = changes_.find({UpperCase(section), UpperCase(key)});
  return change == changes_.end() ? below_.Get(section, key) : change->second.value;
}

void OverlaySettingsStore::Save(std::string_view section, std::string_view key,
                                std::string_view value) {
  Put(section, key, std::string(value));
}

void OverlaySettingsStore::Delete(std::string_view section, std::string_view key) {
  if (!Get(section, key)) {
    throw Error(error_number::kInvalidCall,
                "There is no setting \"" + std::string(key) + "\" to delete.");
  }
  Put(section, key, std::nullopt);
}

void OverlaySettingsStore::Keep() {
  for (const auto& [name, change] : changes_) {
    if (change.value) {
      below_.Save(change.section, change.key, *change.value);
      // It may never have been there, or another program has deleted it meanwhile.
    } else if (below_.Get(change.section, change.key)) {
      below_.Delete(change.section, change.key);
    }
  }
}

void OverlaySettingsStore::Put(std::string_view section, std::string_view key,
                               std::optional<std::string> value) {
  changes_[{UpperCase(section), UpperCase(key)}] = {std::string(section), std::string(key),
                                                    std::move(value)};
}

}  // namespace korvex
