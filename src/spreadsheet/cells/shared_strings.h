// The shared texts of a workbook, by their number.
#pragma once

#include <cstdint>
#include <vector>

#include "spreadsheet/bytes/text_arena.h"

namespace korvex {

class SharedStrings {
 public:
  void Clear() {
    arena_.Clear();
    starts_.clear();
  }
  // To add a text, append it to Texts() and call EndText().
  TextArena& Texts() { return arena_; }
  void EndText() {
    if (starts_.empty()) starts_.push_back(0);
    starts_.push_back(arena_.Size());
  }

  std::size_t Count() const { return starts_.empty() ? 0 : starts_.size() - 1; }
  TextRange Range(std::size_t index) const {
    return {starts_[index], starts_[index + 1] - starts_[index]};
  }
  const TextArena& Arena() const { return arena_; }
  std::size_t MemorySize() const { return arena_.Capacity() + 4 * starts_.capacity(); }
  std::size_t UsedMemory() const { return arena_.Size() + 4 * starts_.size(); }

 private:
  TextArena arena_;
  std::vector<std::uint32_t> starts_;  // one more than texts
};

}  // namespace korvex
