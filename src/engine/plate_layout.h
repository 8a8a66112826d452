// Which columns of a campaign say plate and well, and which wells there are.
#pragma once

#include <cstddef>
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

// "A01", "a1", "AF48": letters are rows (AA follows Z), numbers columns; blanks around it do not
// count. None for anything else, and for what lies outside the largest plate.
std::optional<Well> WellFromName(std::string_view text);
// "1" to "1536": wells counted row by row on a plate of that format. None outside of it.
std::optional<Well> WellFromNumber(std::string_view text, const PlateFormat& format);
// "A01", "AF48".
std::string NameOf(Well well);

struct PlateLayout {
  const PlateFormat* format = nullptr;
  std::size_t well_column = 0;  // indexes into the columns of the readings
  std::size_t plate_column = 0;
  std::vector<std::optional<Well>> well_of_key;  // none outside of the plate
};

// The layout of the readings. Without `plate` and `well` (names of columns) they are found: the
// well column is the one whose values are wells in at least 95 % of the readings; the plate column
// is the key column with which plate, well and replication name each reading once, the one with the
// fewest values first. The format is the smallest that holds 95 % of the wells. When there is none,
// `why_not` says so in a sentence.
std::optional<PlateLayout> FindPlateLayout(const RunReadings& readings,
                                           const std::vector<InputRecord>& inputs,
                                           std::string_view plate, std::string_view well,
                                           std::string& why_not);

}  // namespace korvex
