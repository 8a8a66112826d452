// The keys of a run in the order in which they were met, and by key every reading: which file and
// row it came from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "structure/keyed_collection.h"

namespace korvex {

// Keys count from 0 and ignore letter case. A reading costs four bytes here: the rows of a sheet
// follow one another.
class KeyTable {
 public:
  // One data sheet.
  struct Sheet {
    std::uint32_t input = 0;  // the number of its workbook among those of the run, from 0
    std::int16_t replication = 0;
    int batch = 0;
    int first_row = 0;
    std::size_t first_reading = 0;
  };
  struct Found {
    std::uint32_t key = 0;
    bool is_new = false;        // to the run
    bool is_duplicate = false;  // the sheet has held it already
  };
  struct Place {
    std::uint32_t input = 0;
    int row = 0;
  };

  // Begins the rows of a data sheet, in which each key may occur once.
  void BeginSheet(std::uint32_t input, std::int16_t replication, int batch, int first_row);
  // Takes down that the next row has this key. A duplicate row is counted, but has no reading.
  Found Add(std::string_view key);
  // Counts a row whose key could not be made.
  void SkipRow() { readings_.push_back(kNone); }
  // The row that was added last has no measured value.
  void MarkMissing() { readings_.back() |= kMissing; }

  std::size_t Count() const { return keys_.Count(); }
  std::string_view Name(std::uint32_t key) const { return keys_.Name(key); }

  // All keys, one behind the other.
  std::string_view Text() const { return keys_.Text(); }
  // The first row with a measured value of the key, in a sheet that `is_meant`.
  std::optional<Place> Find(std::uint32_t key,
                            const std::function<bool(const Sheet&)>& is_meant) const;
  // The same for rows with a value or without; in any sheet without `is_meant`.
  std::optional<Place> FindRow(std::uint32_t key,
                               const std::function<bool(const Sheet&)>& is_meant = {}) const;
  // In the order of reading.
  const std::vector<Sheet>& Sheets() const { return sheets_; }
  // Calls take(key, is_missing, row) for every reading of a sheet.
  template <class Take>
  void ForEachReading(std::size_t sheet, Take&& take) const {
    const std::size_t begin = sheets_[sheet].first_reading;
    const std::size_t end = EndOf(sheet);
    int row = sheets_[sheet].first_row;
    for (std::size_t i = begin; i < end; ++i, ++row) {
      if (readings_[i] == kNone) continue;
      take(readings_[i] & ~kMissing, (readings_[i] & kMissing) != 0, row);
    }
  }
  std::size_t ReadingsOf(std::size_t sheet) const {
    return EndOf(sheet) - sheets_[sheet].first_reading;
  }

 private:
  static constexpr std::uint32_t kMissing = 0x8000'0000;
  static constexpr std::uint32_t kNone = 0xFFFF'FFFF;

  std::optional<Place> FindFirst(std::uint32_t key, bool with_missing,
                                 const std::function<bool(const Sheet&)>& is_meant) const;
  void ChainReadings() const;
  std::size_t EndOf(std::size_t sheet) const {
    return sheet + 1 < sheets_.size() ? sheets_[sheet + 1].first_reading : readings_.size();
  }

  NameIndex keys_;
  GrowingArray<std::uint32_t> last_sheet_;  // by key: one past the number of the last sheet
  std::vector<Sheet> sheets_;
  GrowingArray<std::uint32_t> readings_;  // the keys of all rows, flagged where there is no value

  // The readings of each key, chained when one is first looked for, and from then on as far as they
  // have come: a check may look for thousands.
  mutable std::size_t chained_ = 0;
  mutable std::vector<std::uint32_t> first_of_key_;  // indices into the readings, or kNone
  mutable std::vector<std::uint32_t> last_of_key_;
  mutable std::vector<std::uint32_t> next_;  // by reading
};

}  // namespace korvex
