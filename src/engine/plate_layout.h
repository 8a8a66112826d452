// Which columns of a campaign say plate and well, and which wells there are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/run_record.h"

namespace korvex {

// Row and column of a well count from 0.
struct Well {
  int row = 0;
  int column = 0;

  friend bool operator==(const Well&, const Well&) = default;
};

// The plates of microplate standards, by their wells.
struct PlateFormat {
  int wells;
  int rows;
  int columns;
};
inline constexpr PlateFormat kPlateFormats[] = {{96, 8, 12}, {384, 16, 24}, {1536, 32, 48}};

// "A01", "a1", "AF48", "A001": letters are rows (AA follows Z), numbers columns; blanks around it
// do not count, non-breaking ones neither. None for anything else, and for what lies outside the
// largest plate.
std::optional<Well> WellFromName(std::string_view text);
// In bytes: the longest text that is looked at as a well's name, with blanks around it.
inline constexpr std::size_t kLongestWellText = 12;
// "1" to "1536": wells counted row by row on a plate of that format. None outside of it.
std::optional<Well> WellFromNumber(std::string_view text, const PlateFormat& format);
// "A01", "AF48".
std::string NameOf(Well well);

// Plates are the texts of the plate column, in their order.
struct PlateLayout {
  std::size_t well_column = 0;              // indexes into the columns of the readings
  std::optional<std::size_t> plate_column;  // none: all wells are of plate 0
  std::vector<const PlateFormat*> format_of_plate;
  std::vector<std::uint32_t> plate_of_key;
  std::vector<std::optional<Well>> well_of_key;  // none outside of the key's plate
};

// The layout of the readings. Without `plate` and `well` (names of columns in the inputs) they are
// found:
// - The well column is a key or output column whose values are wells in at least 95 % of the
//   readings. Names go before numbers, unless they are all in one row, as the names of plates may
//   be (P1, P2). Numbers count only when they are at least half of a plate's, since plates and
//   doses have numbers, too. Then the column that fills its plates most is taken, key columns
//   first.
// - Plate, well and replication name each reading once; the plate column is the key column with the
//   fewest values for which that holds. Where it holds without a plate there is one plate. A column
//   with far more values than there are keys to a well does not name plates.
//
// A plate's format is the smallest that holds 95 % of its wells. Numbers, which mean different
// wells on different formats, have one format for all plates.
//
// When there is no layout, `why_not` says in a sentence or two why, and what to do.
std::optional<PlateLayout> FindPlateLayout(const RunReadings& readings,
                                           const std::vector<InputRecord>& inputs,
                                           std::string_view plate, std::string_view well,
                                           std::string& why_not);

}  // namespace korvex
