// Writes the shared texts of a workbook stream: SST, its CONTINUE records and EXTSST.
//
//   SST       0  uint32  cells that use a text
//             4  uint32  texts
//             8  the texts: 0 uint16 UTF-16 units, 2 uint8 flags (bit 0: 16-bit units), 3 the units
//   CONTINUE  the data goes on; between the units of a text a flags byte comes first
//   EXTSST    0  uint16  texts in a bucket
//             2  for the first text of each bucket: uint32 offset in the stream, uint16 offset in
//                its record (header included), uint16 0
//
// Readers agree only on splits between units. So the header of a text stays with its first units,
// and a surrogate pair stays whole.
#pragma once

#include <cstdint>
#include <vector>

#include "spreadsheet/cells/text_pool.h"

namespace korvex {

// Numbers the texts in the order in which cells first use them, so that equal cells give an equal
// table, in whatever order they were filled.
class SharedStringWriter {
 public:
  // `texts` must outlive the table.
  explicit SharedStringWriter(const TextPool& texts);

  // The number of a text of the pool in the table; the first call for a text gives it one.
  std::uint32_t IndexOf(std::uint32_t text_id) {
    std::uint32_t& index = index_of_text_[text_id];
    if (index == kUnused) {
      index = static_cast<std::uint32_t>(text_of_index_.size());
      text_of_index_.push_back(text_id);
    }
    return index;
  }

  // `out` is a ByteWriter or a ByteCounter, and `stream_start` its position at which the workbook
  // stream began.
  template <class Out>
  void Write(Out& out, std::uint64_t stream_start, std::uint64_t references) const;

 private:
  static constexpr std::uint32_t kUnused = 0xFFFFFFFF;

  const TextPool& texts_;
  std::vector<std::uint32_t> index_of_text_;
  std::vector<std::uint32_t> text_of_index_;
};

}  // namespace korvex
