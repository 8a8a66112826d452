#include "text/text_hash.h"

#include <cstddef>
#include <cstring>
#include <random>

namespace korvex {
namespace {

std::uint64_t RandomBits() {
  std::random_device random;
  return std::uint64_t{random()} << 32 | random();
}

}  // namespace

// FNV-1a, eight bytes a step, with a random start and factor for each run of the program. The
// factor is odd, since an even one would shift bits out; the upper half is folded in at the end,
// since tables use the lowest bits, which a product mixes least.
std::uint32_t HashOf(std::string_view text) {
  static const std::uint64_t kStart = RandomBits();
  static const std::uint64_t kFactor = RandomBits() | 1;
  std::uint64_t hash = kStart ^ text.size();
  std::size_t at = 0;
  for (; at + 8 <= text.size(); at += 8) {
    std::uint64_t step;
    std::memcpy(&step, text.data() + at, sizeof step);
    hash = (hash ^ step) * kFactor;
    hash ^= hash >> 29;
  }
  for (; at < text.size(); ++at) {
    hash = (hash ^ static_cast<unsigned char>(text[at])) * kFactor;
  }
  return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

}  // namespace korvex
