// Limits what reading one workbook may cost. Packed parts, repeated cells and shared texts can
// expand to far more than the file's size; a reader asks here before it goes on, and files above a
// limit are refused.
//
// The limits are against files made to exhaust the machine. They lie far above what programs write:
// sheets of plates pack to a seventieth of their size, sheets of one constant to a two-hundredth.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "spreadsheet/bytes/refusal.h"
#include "text/text.h"

namespace korvex {

class ReadBudget {
 public:
  // `given_up` may be set by another thread when nobody wants the workbook any more. It must
  // outlive the budget.
  explicit ReadBudget(std::size_t file_size, const std::atomic<bool>* given_up = nullptr)
      : given_up_(given_up),
        most_unpacked_(kUnpackedAtLeast + kUnpackedPerByte * std::uint64_t{file_size}),
        most_memory_(kMemoryAtLeast + kMemoryPerByte * std::uint64_t{file_size}) {}

  // Counts bytes that were unpacked, of all parts and again each time that a part is read.
  void AddUnpacked(std::size_t count) {
    if (given_up_ != nullptr && *given_up_) Refuse("is not wanted any more");
    unpacked_ += count;
    if (unpacked_ > most_unpacked_) {
      Refuse("unpacks to more than " + GroupedDigits(most_unpacked_) + " bytes");
    }
  }
  // Whether so many bytes more could be unpacked.
  bool Allows(std::uint64_t count) const { return count <= most_unpacked_ - unpacked_; }
  // `used` is the memory of cells and texts so far, without the capacity that they keep to grow.
  void CheckMemory(std::size_t used) const {
    if (used > most_memory_) {
      Refuse("takes more than " + GroupedDigits(most_memory_) + " bytes of memory");
    }
  }
  // `shown` counts the bytes of all texts of a sheet, a shared text for each cell that shows it: a
  // caller that copies the text of each cell needs that much.
  void CheckShownText(std::uint64_t shown) const {
    if (shown > most_unpacked_) {
      Refuse("shows more than " + GroupedDigits(most_unpacked_) + " bytes of text in one sheet");
    }
  }

 private:
  static constexpr std::uint64_t kUnpackedAtLeast = std::uint64_t{512} << 20;
  static constexpr std::uint64_t kUnpackedPerByte = 200;
  // A container that doubles its capacity takes three times as much for a moment.
  static constexpr std::uint64_t kMemoryAtLeast = std::uint64_t{256} << 20;
  static constexpr std::uint64_t kMemoryPerByte = 8;

  const std::atomic<bool>* given_up_;
  std::uint64_t most_unpacked_;
  std::uint64_t most_memory_;
  std::uint64_t unpacked_ = 0;
};

}  // namespace korvex
