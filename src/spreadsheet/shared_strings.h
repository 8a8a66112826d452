// The shared texts of a workbook: the SST of BIFF8, decoded in one pass, or those of an .xlsx.
#pragma once

#include <cstdint>
#include <vector>

#include "spreadsheet/record_reader.h"
#include "spreadsheet/text_arena.h"

namespace korvex {

// SST: uint32 number of uses, uint32 number of texts, then the texts, each a uint16 length and a
// BIFF8 text. The stated numbers are not believed: the table ends where its data ends. A last text
// that the data does not hold whole is no part of the table.
class SharedStrings {
 public:
  void Clear();
  // False when the data ends within a text.
  bool Decode(ContinuedData data);
  // Texts of other formats are written into the arena one by one.
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
