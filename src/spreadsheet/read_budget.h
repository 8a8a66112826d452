// What reading a packed workbook may cost. Zip archives and repeated cells can stand for far more
// than the file's size; a reader asks here before it goes on.
#pragma once

#include <cstddef>

#include "spreadsheet/refusal.h"
#include "util/text.h"

namespace korvex {

class ReadBudget {
 public:
  explicit ReadBudget(std::size_t file_size)
      : most_unpacked_(kUnpackedAtLeast +
                       (file_size > kSmallFile ? kUnpackedPerByte * (file_size - kSmallFile) : 0)),
        most_memory_(kMemoryPerByte * file_size + kMemoryAtLeast) {}

  // Counts bytes that came out of the archive, over all parts and however often one is read.
  void AddUnpacked(std::size_t count) {
    unpacked_ += count;
    if (unpacked_ > most_unpacked_) {
      Refuse("unpacks to more than " + GroupedDigits(most_unpacked_) +
             " bytes, which no workbook of its size does");
    }
  }
  // Takes what cells and texts take up so far.
  void CheckMemory(std::size_t used) const {
    if (used > most_memory_) {
      Refuse("holds more cells and texts than a workbook of its size can");
    }
  }

 private:
  // A sheet of one value over and over is packed to a twentieth, one of nothing but formats to a
  // fiftieth. A small file must not take long whatever it holds.
  static constexpr std::size_t kSmallFile = 1u << 20;
  static constexpr std::size_t kUnpackedAtLeast = 32u << 20;
  static constexpr std::size_t kUnpackedPerByte = 100;
  // Growing by doubling takes three times what is used for a moment.
  static constexpr std::size_t kMemoryPerByte = 6;
  static constexpr std::size_t kMemoryAtLeast = 16u << 20;

  std::size_t most_unpacked_;
  std::size_t most_memory_;
  std::size_t unpacked_ = 0;
};

}  // namespace korvex
