// The texts of a workbook stream: SST, its CONTINUE records and EXTSST.
//
//   SST       uint32 references in cells, uint32 strings, then the strings:
//             uint16 UTF-16 units, uint8 flags (bit 0: 16-bit units), the units, either 8 or 16 bit
//   CONTINUE  where it begins inside a string's units, they follow a flags byte of their own
//   EXTSST    uint16 strings a bucket, then for each bucket's first string
//             uint32 stream offset, uint16 offset in its record (header included), uint16 0
//
// Readers agree only on splits inside units, so a string's header stays with its first units here,
// and a surrogate pair stays whole.
#pragma once

#include <cstdint>
#include <vector>

#include "spreadsheet/cells/text_pool.h"

namespace korvex {

class ByteWriter;

// Numbers the texts in the order in which cells first use them: the table depends on what the cells
// hold, not on how they came to hold it.
class SharedStringWriter {
 public:
  // `texts` must outlive the table.
  explicit SharedStringWriter(const TextPool& texts);

  std::uint32_t IndexOf(std::uint32_t text_id) {
    std::uint32_t& index = index_of_text_[text_id];
    if (index == kUnused) {
      index = static_cast<std::uint32_t>(text_of_index_.size());
      text_of_index_.push_back(text_id);
    }
    return index;
  }

  // The position of `out` is that of the workbook stream plus `stream_start`.
  void Write(ByteWriter& out, std::uint64_t stream_start, std::uint64_t references) const;

 private:
  static constexpr std::uint32_t kUnused = 0xFFFFFFFF;

  const TextPool& texts_;
  std::vector<std::uint32_t> index_of_text_;
  std::vector<std::uint32_t> text_of_index_;
};

}  // namespace korvex
