#include "engine/key_table.h"

namespace korvex {

void KeyTable::BeginSheet(std::uint32_t input, std::int16_t replication, int batch, int first_row) {
  sheets_.push_back({input, replication, batch, first_row, readings_.size()});
}

KeyTable::Found KeyTable::Add(std::string_view key) {
  const auto [number, is_new] = keys_.FindOrAdd(key);
  if (is_new) last_sheet_.push_back(0);
  Found found{static_cast<std::uint32_t>(number), is_new, false};
  const auto sheet = static_cast<std::uint32_t>(sheets_.size());
  found.is_duplicate = last_sheet_[number] == sheet;
  last_sheet_[number] = sheet;
  readings_.push_back(found.is_duplicate ? kNone : found.key);
  return found;
}

std::optional<KeyTable::Place> KeyTable::FindIn(std::size_t sheet, std::uint32_t key,
                                                bool with_missing) const {
  std::optional<Place> place;
  ForEachReading(sheet, [&](std::uint32_t found, bool is_missing, int row) {
    if (found == key && !place && (with_missing || !is_missing)) {
      place = {sheets_[sheet].input, row};
    }
  });
  return place;
}

std::optional<KeyTable::Place> KeyTable::Find(
    std::uint32_t key, const std::function<bool(const Sheet&)>& is_meant) const {
  for (std::size_t sheet = 0; sheet < sheets_.size(); ++sheet) {
    if (!is_meant(sheets_[sheet])) continue;
    if (const auto place = FindIn(sheet, key, false)) return place;
  }
  return std::nullopt;
}

std::optional<KeyTable::Place> KeyTable::FindRow(
    std::uint32_t key, const std::function<bool(const Sheet&)>& is_meant) const {
  for (std::size_t sheet = 0; sheet < sheets_.size(); ++sheet) {
    if (is_meant && !is_meant(sheets_[sheet])) continue;
    if (const auto place = FindIn(sheet, key, true)) return place;
  }
  return std::nullopt;
}

}  // namespace korvex
