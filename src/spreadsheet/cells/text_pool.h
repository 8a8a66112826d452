// The texts of a workbook that is being built; equal texts are stored once.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace korvex {

// Ids count from 0 in the order of the first calls. Texts are never moved or removed: a view of one
// is valid as long as the pool.
class TextPool {
 public:
  TextPool();

  // The id of a text. A new text is copied; for a known one this costs one look-up and no
  // allocation.
  std::uint32_t Intern(std::string_view text);
  std::string_view Text(std::uint32_t id) const { return {texts_[id].data, texts_[id].length}; }
  std::uint32_t Count() const { return static_cast<std::uint32_t>(texts_.size()); }

 private:
  struct Entry {
    const char* data;
    std::uint32_t length;
    std::uint32_t hash;
  };

  // Copies a text into a block.
  const char* Store(std::string_view text);
  std::size_t FreeSlot(std::uint32_t hash) const;
  void DoubleSlots();

  std::vector<Entry> texts_;
  // Open addressing; a power of two, at most half full. Holds ids.
  std::vector<std::uint32_t> slots_;
  std::vector<std::unique_ptr<char[]>> blocks_;
  char* free_ = nullptr;
  std::size_t free_size_ = 0;
};

}  // namespace korvex
