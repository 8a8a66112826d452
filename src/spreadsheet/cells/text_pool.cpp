#include "spreadsheet/cells/text_pool.h"

#include <algorithm>

#include "text/text_hash.h"

namespace korvex {

namespace {

constexpr std::uint32_t kFree = 0xFFFFFFFF;
constexpr std::size_t kFirstSlots = 256;
constexpr std::size_t kBlockSize = 32 * 1024;

}  // namespace

TextPool::TextPool() : slots_(kFirstSlots, kFree) {}

// Texts of plates repeat in thousands of cells. The hash is kept with each text, so that most
// others in its place are told apart without comparing letters.
std::uint32_t TextPool::Intern(std::string_view text) {
  const std::uint32_t hash = HashOf(text);
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t slot = hash & mask; slots_[slot] != kFree; slot = (slot + 1) & mask) {
    const std::uint32_t id = slots_[slot];
    if (texts_[id].hash == hash && Text(id) == text) return id;
  }
  if ((texts_.size() + 1) * 2 > slots_.size()) DoubleSlots();
  const std::uint32_t id = Count();
  texts_.push_back({Store(text), static_cast<std::uint32_t>(text.size()), hash});
  slots_[FreeSlot(hash)] = id;
  return id;
}

// Texts are packed into blocks. The rest of a block that is too short for the next text stays
// unused.
const char* TextPool::Store(std::string_view text) {
  if (text.size() > free_size_) {
    const std::size_t size = std::max(kBlockSize, text.size());
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
    free_ = blocks_.back().get();
    free_size_ = size;
  }
  char* const stored = free_;
  free_ = std::copy(text.begin(), text.end(), stored);
  free_size_ -= text.size();
  return stored;
}

std::size_t TextPool::FreeSlot(std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (slots_[slot] != kFree) slot = (slot + 1) & mask;
  return slot;
}

void TextPool::DoubleSlots() {
  std::vector<std::uint32_t>(slots_.size() * 2, kFree).swap(slots_);
  for (std::uint32_t id = 0; id < Count(); ++id) slots_[FreeSlot(texts_[id].hash)] = id;
}

}  // namespace korvex
