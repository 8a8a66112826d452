#include "engine/key_table.h"

#include <algorithm>
#include <iterator>

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

void KeyTable::ChainReadings() const {
  first_of_key_.resize(Count(), kNone);
  last_of_key_.resize(Count(), kNone);
  next_.resize(readings_.size(), kNone);
  for (; chained_ < readings_.size(); ++chained_) {
    if (readings_[chained_] == kNone) continue;
    const std::uint32_t key = readings_[chained_] & ~kMissing;
    const auto reading = static_cast<std::uint32_t>(chained_);
    (first_of_key_[key] == kNone ? first_of_key_[key] : next_[last_of_key_[key]]) = reading;
    last_of_key_[key] = reading;
  }
}

std::optional<KeyTable::Place> KeyTable::FindFirst(
    std::uint32_t key, bool with_missing, const std::function<bool(const Sheet&)>& is_meant) const {
  ChainReadings();
  for (std::uint32_t reading = first_of_key_[key]; reading != kNone; reading = next_[reading]) {
    if (!with_missing && (readings_[reading] & kMissing) != 0) continue;
    const auto behind =
        std::ranges::upper_bound(sheets_, std::size_t{reading}, {}, &Sheet::first_reading);
    const Sheet& sheet = *std::prev(behind);
    if (is_meant && !is_meant(sheet)) continue;
    return Place{sheet.input, sheet.first_row + static_cast<int>(reading - sheet.first_reading)};
  }
  return std::nullopt;
}

std::optional<KeyTable::Place> KeyTable::Find(
    std::uint32_t key, const std::function<bool(const Sheet&)>& is_meant) const {
  return FindFirst(key, false, is_meant);
}

std::optional<KeyTable::Place> KeyTable::FindRow(
    std::uint32_t key, const std::function<bool(const Sheet&)>& is_meant) const {
  return FindFirst(key, true, is_meant);
}

}  // namespace korvex
