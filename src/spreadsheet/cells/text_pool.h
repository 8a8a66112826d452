// The texts of a workbook that is being built; equal texts are stored once.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/growing_array.h"
#include "text/text_hash.h"

namespace korvex {

// Ids count from 0 in the order of the first calls. Texts are never moved or removed: a view of one
// is valid as long as the pool.
class TextPool {
 public:
  // The id of a text. A new text is copied; for a known one this costs one look-up and no
  // allocation.
  std::uint32_t Intern(std::string_view text);
  std::string_view Text(std::uint32_t id) const { return texts_[id]; }
  std::uint32_t Count() const { return static_cast<std::uint32_t>(texts_.size()); }

 private:
  // Copies a text into a block.
  std::string_view Store(std::string_view text);

  GrowingArray<std::string_view> texts_;
  HashSlots slots_;  // of ids
  std::vector<std::unique_ptr<char[]>> blocks_;
  char* free_ = nullptr;
  std::size_t free_size_ = 0;
};

}  // namespace korvex
