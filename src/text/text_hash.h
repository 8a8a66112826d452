// Hashes of texts for tables in memory, and the tables.
//
// A hash differs from run to run. Otherwise somebody could write an input file whose texts all fall
// into one slot of a table, where finding one means comparing it with all the others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace korvex {

std::uint32_t HashOf(std::string_view text);
// The same for texts that are equal as EqualText compares them.
std::uint32_t HashIgnoringCase(std::string_view text);

// Finds numbered things by their hashes; the caller keeps the things, numbered from 0. A slot holds
// the hash beside the number, so that things of other hashes are passed over without looking at
// them: each look would wait for memory.
class HashSlots {
 public:
  static constexpr std::uint32_t kNone = 0xFFFF'FFFF;

  // The number of the thing with that hash for which `is_it(number)` is true; kNone if there is
  // none.
  template <class IsIt>
  std::uint32_t Find(std::uint32_t hash, IsIt&& is_it) const {
    return slots_.empty() ? kNone : slots_[SlotOf(hash, is_it)].number;
  }
  // Adds `number` in that case, and returns it.
  template <class IsIt>
  std::uint32_t FindOrAdd(std::uint32_t hash, std::uint32_t number, IsIt&& is_it) {
    if (3 * (count_ + 1) > 2 * slots_.size()) Grow();
    Slot& slot = slots_[SlotOf(hash, is_it)];
    if (slot.number != kNone) return slot.number;
    slot = {hash, number};
    ++count_;
    return number;
  }
  void Clear() {
    slots_.clear();
    count_ = 0;
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = kNone;
  };

  // Linear probing: from the slot of the hash onwards. At least a third of the slots is free, so
  // that a free one comes soon.
  template <class IsIt>
  std::size_t SlotOf(std::uint32_t hash, IsIt&& is_it) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
      if (slots_[slot].number == kNone) return slot;
      if (slots_[slot].hash == hash && is_it(slots_[slot].number)) return slot;
    }
  }
  void Grow();

  std::vector<Slot> slots_;  // a power of two
  std::size_t count_ = 0;
};

}  // namespace korvex
