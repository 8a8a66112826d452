#include "text/text_hash.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "text/text.h"

namespace korvex {
namespace {

constexpr std::size_t kFirstSlots = 16;
constexpr std::size_t kStep = 8;  // bytes
constexpr std::uint64_t kEachByte = 0x0101'0101'0101'0101;
constexpr std::uint64_t kHighBits = 0x80 * kEachByte;

// Drawn once for each run of the program. The factor is odd, since an even one would shift bits
// out.
struct Seed {
  std::uint64_t start = RandomBits();
  std::uint64_t factor = RandomBits() | 1;

  static std::uint64_t RandomBits() {
    std::random_device random;
    return std::uint64_t{random()} << 32 | random();
  }
};

const Seed& SeedOfRun() {
  static const Seed seed;
  return seed;
}

// FNV-1a, eight bytes a step, with a random start and factor. A bit changes only those above it in
// a product, and the last letters of a text, in which those of a plate differ, are the highest: so
// each product is folded, and the hash is the upper half of one more. `change` is what each step
// goes through first.
template <class Change>
std::uint32_t Hash(std::string_view text, Change&& change) {
  const Seed seed = SeedOfRun();
  std::uint64_t hash = seed.start ^ text.size();
  const auto mix = [&](std::uint64_t step) {
    hash = (hash ^ change(step)) * seed.factor;
    hash ^= hash >> 29;
  };
  const auto load = [&](std::size_t at) {
    std::uint64_t step = 0;
    std::memcpy(&step, text.data() + at, kStep);
    return step;
  };
  if (text.size() < kStep) {
    std::uint64_t step = 0;
    for (const char c : text) step = step << 8 | static_cast<unsigned char>(c);
    mix(step);
  } else {
    for (std::size_t at = 0; at + kStep < text.size(); at += kStep) mix(load(at));
    // The last step goes back over bytes of the one before.
    mix(load(text.size() - kStep));
  }
  return static_cast<std::uint32_t>(hash * seed.factor >> 32);
}

bool IsAscii(std::string_view text) {
  unsigned char all_bits = 0;
  for (const char c : text) {
    all_bits = static_cast<unsigned char>(all_bits | static_cast<unsigned char>(c));
  }
  return all_bits < 0x80;
}

// Upper case of eight ASCII letters at once: the highest bit of each byte, which is free, tells
// after an addition whether the letter lies at or above a limit.
std::uint64_t UpperAscii(std::uint64_t letters) {
  const std::uint64_t from_a = letters + (0x80 - 'a') * kEachByte;
  const std::uint64_t above_z = letters + (0x80 - 'z' - 1) * kEachByte;
  return letters ^ ((from_a & ~above_z & kHighBits) >> 2);
}

}  // namespace

std::uint32_t HashOf(std::string_view text) {
  return Hash(text, [](std::uint64_t step) { return step; });
}

std::uint32_t HashIgnoringCase(std::string_view text) {
  if (IsAscii(text)) return Hash(text, UpperAscii);
  return HashOf(UpperCase(text));
}

void HashSlots::Grow() {
  std::vector<Slot> slots(std::max(kFirstSlots, 2 * slots_.size()));
  const std::size_t mask = slots.size() - 1;
  for (const Slot& kept : slots_) {
    if (kept.number == kNone) continue;
    std::size_t slot = kept.hash & mask;
    while (slots[slot].number != kNone) slot = (slot + 1) & mask;
    slots[slot] = kept;
  }
  slots_.swap(slots);
}

}  // namespace korvex
