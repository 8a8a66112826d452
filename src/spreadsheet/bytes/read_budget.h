// What reading one workbook may cost. Packed parts, repeated cells and shared texts can stand for
// far more than the file's size; a reader asks here before it goes on.
//
// The limits are there for files made to exhaust the machine. They lie far above what programs
// write: plates pack to a seventieth, constants to a two-hundredth. Refusals are Errors 1004 whose
// description is a predicate (refusal.h).
#pragma once

#include <cstddef>
#include <cstdint>

#include "spreadsheet/bytes/refusal.h"
#include "text/text.h"

namespace korvex {

class ReadBudget {
 public:
  explicit ReadBudget(std::size_t file_size)
      : most_unpacked_(kUnpackedAtLeast + kUnpackedPerByte * std::uint64_t{file_size}),
        most_memory_(kMemoryAtLeast + kMemoryPerByte * std::uint64_t{file_size}) {}

  // Counts bytes that came out of the archive, over all parts and however often one is read.
  void AddUnpacked(std::size_t count) {
    unpacked_ += count;
    if (unpacked_ > most_unpacked_) {
      Refuse("unpacks to more than " + GroupedDigits(most_unpacked_) + " bytes");
    }
  }
  // Takes what cells and texts take up so far, without the room that they keep to grow.
  void CheckMemory(std::size_t used) const {
    if (used > most_memory_) {
      Refuse("takes more than " + GroupedDigits(most_memory_) + " bytes of memory");
    }
  }
  // Takes the bytes of all texts of a sheet, those that share their place as often as they are
  // shown: whoever makes a key of each row holds them as often.
  void CheckShownText(std::uint64_t shown) const {
    if (shown > most_unpacked_) {
      Refuse("shows more than " + GroupedDigits(most_unpacked_) + " bytes of text in one sheet");
    }
  }

 private:
  static constexpr std::uint64_t kUnpackedAtLeast = std::uint64_t{512} << 20;
  static constexpr std::uint64_t kUnpackedPerByte = 200;
  // Growing by doubling takes three times what is used for a moment.
  static constexpr std::uint64_t kMemoryAtLeast = std::uint64_t{256} << 20;
  static constexpr std::uint64_t kMemoryPerByte = 8;

  std::uint64_t most_unpacked_;
  std::uint64_t most_memory_;
  std::uint64_t unpacked_ = 0;
};

}  // namespace korvex
