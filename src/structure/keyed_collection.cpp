#include "structure/keyed_collection.h"

#include "text/text_hash.h"

namespace korvex {
namespace {
constexpr std::size_t kFirstSlots = 16;  // a power of two, like every later number of slots
}

std::string_view NameIndex::Name(std::size_t position) const {
  const Stored& name = names_[position];
  return std::string_view(text_).substr(name.start, name.length);
}

std::uint32_t NameIndex::Hash(std::string_view name) const {
  upper_.clear();
  AppendUpperCase(name, upper_);
  return HashOf(upper_);
}

// Linear probing: from the slot of the hash onwards. The table is never more than half full, so
// that an empty slot comes soon.
std::size_t NameIndex::SlotOf(std::string_view name, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
    if (slots_[slot] == 0) return slot;
    const std::size_t position = slots_[slot] - 1;
    if (names_[position].hash == hash && EqualText(Name(position), name)) return slot;
  }
}

std::size_t NameIndex::Find(std::string_view name) const {
  if (slots_.empty()) return kNone;
  const std::uint32_t found = slots_[SlotOf(name, Hash(name))];
  return found == 0 ? kNone : found - 1;
}

std::pair<std::size_t, bool> NameIndex::FindOrAdd(std::string_view name) {
  // The workbooks of one plate hold its keys in the same order, so the name after the one found
  // last is tried first; that saves the hash.
  if (++last_found_ < names_.size() && Name(last_found_) == name) return {last_found_, false};
  if (2 * (names_.size() + 1) > slots_.size()) Grow();  // before a slot is chosen
  const std::uint32_t hash = Hash(name);
  std::uint32_t& slot = slots_[SlotOf(name, hash)];
  if (slot != 0) return {last_found_ = slot - 1, false};
  last_found_ = names_.size();
  names_.push_back({text_.size(), static_cast<std::uint32_t>(name.size()), hash});
  text_.append(name);
  slot = static_cast<std::uint32_t>(names_.size());
  return {last_found_, true};
}

void NameIndex::Grow() {
  slots_.assign(slots_.empty() ? kFirstSlots : 2 * slots_.size(), 0);
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t position = 0; position < names_.size(); ++position) {
    std::size_t slot = names_[position].hash & mask;
    while (slots_[slot] != 0) slot = (slot + 1) & mask;
    slots_[slot] = static_cast<std::uint32_t>(position + 1);
  }
}

void NameIndex::Clear() {
  text_.clear();
  names_.clear();
  slots_.clear();
  last_found_ = 0;
}

}  // namespace korvex
