#include "engine/plate_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>

#include "text/text.h"
#include "text/text_hash.h"

namespace korvex {
namespace {

constexpr const PlateFormat& kLargest = *std::rbegin(kPlateFormats);
constexpr std::size_t kWellPercent = 95;
// A key column names plates only with at most this many values for every key of the well that has
// most keys: each plate has one key to a well, but not every plate has every well.
constexpr std::size_t kPlatesPerKeyOfWell = 4;

// What is left may be mistakes.
bool AreNearlyAll(std::size_t part, std::size_t whole) {
  return part * 100 >= whole * kWellPercent;
}

// One number for a well on any plate: as if it were on the largest.
std::size_t NumberOf(Well well) {
  return static_cast<std::size_t>(well.row * kLargest.columns + well.column);
}

bool Holds(const PlateFormat& format, Well well) {
  return well.row < format.rows && well.column < format.columns;
}

// Digits alone, none or too many of which are no number.
std::optional<int> NumberFrom(std::string_view digits, std::size_t most_digits) {
  int number = 0;
  const char* const end = digits.data() + digits.size();
  // A minus is refused here, since the conversion would take it.
  if (digits.empty() || digits.size() > most_digits || digits.front() == '-') return std::nullopt;
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

// Counts how much each format holds, to find the smallest that holds 95 %. The first when there is
// nothing to hold.
class FormatCount {
 public:
  template <class IsHeld>
  void Add(std::size_t weight, IsHeld&& is_held) {
    whole_ += weight;
    for (std::size_t i = 0; i < held_.size(); ++i) {
      if (is_held(kPlateFormats[i])) held_[i] += weight;
    }
  }
  const PlateFormat* Smallest() const {
    // From the smallest: each larger format holds what a smaller one holds.
    for (std::size_t i = 0; i < held_.size(); ++i) {
      if (AreNearlyAll(held_[i], whole_)) return &kPlateFormats[i];
    }
    return &kLargest;
  }

 private:
  std::size_t whole_ = 0;
  std::array<std::size_t, std::size(kPlateFormats)> held_ = {};
};

// A column read as wells.
struct WellColumn {
  // The most likely first. Names that are all in one row may be those of plates: P1, P2, P3.
  enum class Form { kNames, kNumbers, kNamesOfOneRow };

  std::size_t column = 0;
  Form form = Form::kNames;
  const PlateFormat* format = nullptr;  // of numbers; none for names
  std::vector<std::optional<Well>> well_of_text;
  std::size_t readings = 0;  // that have a well on the largest plate
  int wells = 0;             // how many different ones
  int fill = 0;              // the thousandths of a plate that they are
};

// Finds one reading twice in a plate, well and replication.
class PlaceSet {
 public:
  explicit PlaceSet(std::size_t most) {
    // A power of two, and half of the slots free at least, so that a search ends after a step or
    // two.
    std::size_t slots = 16;
    while (slots < 2 * most) slots *= 2;
    slots_.resize(slots);
  }

  // False when it is in already.
  bool Insert(std::uint64_t place) {
    const std::uint64_t entry = place + 1;  // 0 is a free slot
    // Mixed as SplitMix64 does it, from a start of this run.
    std::uint64_t mixed = entry ^ start_;
    mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
    mixed ^= mixed >> 31;
    for (std::size_t slot = mixed & (slots_.size() - 1);; slot = (slot + 1) & (slots_.size() - 1)) {
      if (slots_[slot] == entry) return false;
      if (slots_[slot] == 0) {
        slots_[slot] = entry;
        return true;
      }
    }
  }

 private:
  // Another one in every run, so that nobody can write a campaign whose readings all meet in one
  // slot.
  std::uint64_t start_ = std::uint64_t{HashOf("start")} << 32 | HashOf("place");
  std::vector<std::uint64_t> slots_;
};

class LayoutFinder {
 public:
  LayoutFinder(const RunReadings& readings, const std::vector<InputRecord>& inputs)
      : readings_(readings), inputs_(inputs), readings_of_key_(readings.keys.size()) {
    for (const Reading& reading : readings.readings) ++readings_of_key_[reading.key];
  }

  std::optional<PlateLayout> Find(std::string_view plate, std::string_view well);
  const std::string& WhyNot() const { return why_not_; }

 private:
  using Column = std::optional<std::size_t>;

  bool FindNamed(std::string_view name, Column& column);
  std::vector<WellColumn> NamedWells(std::size_t column);
  std::vector<WellColumn> LikelyWells(Column plate);
  WellColumn Read(std::size_t column, bool as_numbers) const;
  bool FindPlates(const WellColumn& wells, Column& plate) const;
  std::optional<std::pair<const Reading*, const Reading*>> Doubled(const WellColumn& wells,
                                                                   Column plate) const;
  void ExplainDoubled(const WellColumn& wells, std::size_t plate);
  PlateLayout Lay(const WellColumn& wells, Column plate) const;

  std::uint64_t PlaceOf(const Reading& reading, Well well, Column plate) const {
    // 32 bits for the plate, 16 for the well and 16 for the replication: a place is a number.
    const std::uint64_t number = plate ? readings_.columns[*plate].text_of_key[reading.key] : 0;
    return (number << 16 | NumberOf(well)) << 16 |
           static_cast<std::uint16_t>(inputs_[reading.input].replication);
  }
  const std::optional<Well>& WellOf(const WellColumn& wells, std::size_t key) const {
    return wells.well_of_text[readings_.columns[wells.column].text_of_key[key]];
  }

  const RunReadings& readings_;
  const std::vector<InputRecord>& inputs_;
  std::vector<std::size_t> readings_of_key_;
  std::string why_not_;
};

std::optional<PlateLayout> LayoutFinder::Find(std::string_view plate, std::string_view well) {
  Column plate_column;
  Column well_column;
  if (readings_.readings.empty()) {
    why_not_ = "There are no readings.";
    return std::nullopt;
  }
  if (!FindNamed(plate, plate_column) || !FindNamed(well, well_column)) return std::nullopt;
  if (plate_column && plate_column == well_column) {
    why_not_ = "Plates and wells cannot be in one column, \"" + std::string(well) + "\".";
    return std::nullopt;
  }
  const std::vector<WellColumn> candidates =
      well_column ? NamedWells(*well_column) : LikelyWells(plate_column);
  for (const WellColumn& wells : candidates) {
    // A named plate column must tell the readings of a well apart; without one, a column that does
    // is looked for.
    Column found = plate_column;
    if (plate_column ? !Doubled(wells, plate_column) : FindPlates(wells, found)) {
      return Lay(wells, found);
    }
  }
  if (candidates.empty()) return std::nullopt;
  if (plate_column) {
    ExplainDoubled(candidates.front(), *plate_column);
  } else {
    why_not_ =
        "The wells are in the column \"" + readings_.columns[candidates.front().column].name +
        "\", but no key column tells their plates apart: add the column of the plates to the "
        "key, or name it with --plate.";
  }
  return std::nullopt;
}

bool LayoutFinder::FindNamed(std::string_view name, Column& column) {
  if (name.empty()) return true;
  const auto& columns = readings_.columns;
  const auto found = std::ranges::find_if(
      columns, [&](const KeyedColumn& each) { return EqualText(each.name, name); });
  if (found == columns.end()) {
    why_not_ = "There is no key or output column \"" + std::string(name) + "\".";
    return false;
  }
  column = static_cast<std::size_t>(found - columns.begin());
  return true;
}

std::vector<WellColumn> LayoutFinder::NamedWells(std::size_t column) {
  // A named column is taken at its word: it needs no 95 %. Of the two ways to read it, the one with
  // more readings counts.
  WellColumn names = Read(column, false);
  WellColumn numbers = Read(column, true);
  WellColumn& wells = names.readings >= numbers.readings ? names : numbers;
  if (wells.readings > 0) return {std::move(wells)};
  why_not_ = "The column \"" + readings_.columns[column].name +
             "\" holds no wells such as A01, and no numbers of wells.";
  return {};
}

// The most likely one first.
std::vector<WellColumn> LayoutFinder::LikelyWells(Column plate) {
  std::vector<WellColumn> found;
  for (std::size_t column = 0; column < readings_.columns.size(); ++column) {
    if (plate == column) continue;
    for (const bool as_numbers : {false, true}) {
      WellColumn wells = Read(column, as_numbers);
      if (!AreNearlyAll(wells.readings, readings_.readings.size())) continue;
      if (as_numbers && 2 * wells.wells < wells.format->wells) continue;
      found.push_back(std::move(wells));
    }
  }
  std::ranges::sort(found, {}, [this](const WellColumn& wells) {
    // The last of equals: keys name what is larger before what is smaller, plates before wells.
    return std::tuple(wells.form, -wells.fill, !readings_.columns[wells.column].in_key,
                      ~wells.column);
  });
  if (found.empty()) {
    why_not_ =
        "No key or output column holds wells, such as A01 or the numbers from 1 to 96, in at least "
        "95 % of the readings: add the column of the wells to the key or the output, or name it "
        "with --well.";
  }
  return found;
}

WellColumn LayoutFinder::Read(std::size_t column, bool as_numbers) const {
  const KeyedColumn& values = readings_.columns[column];
  // Counted by text, so that each text is read as a well once, however many readings have it.
  std::vector<std::size_t> readings_of_text(values.texts.size());
  for (std::size_t key = 0; key < readings_of_key_.size(); ++key) {
    readings_of_text[values.text_of_key[key]] += readings_of_key_[key];
  }
  WellColumn wells;
  wells.column = column;
  FormatCount formats;
  for (std::size_t i = 0; i < values.texts.size(); ++i) {
    const std::string& text = values.texts[i];
    const auto well = as_numbers ? WellFromNumber(text, kLargest) : WellFromName(text);
    wells.well_of_text.push_back(well);
    if (!well) continue;
    wells.readings += readings_of_text[i];
    formats.Add(readings_of_text[i], [&](const PlateFormat& format) {
      return as_numbers ? WellFromNumber(text, format).has_value() : Holds(format, *well);
    });
  }
  const PlateFormat& format = *formats.Smallest();
  if (as_numbers) {
    wells.format = &format;
    // Now that the format is known: number 13 is B01 on 96 wells and A13 on 384.
    for (std::size_t i = 0; i < values.texts.size(); ++i) {
      wells.well_of_text[i] = WellFromNumber(values.texts[i], format);
    }
  }
  std::vector<bool> is_met(static_cast<std::size_t>(kLargest.wells));
  std::set<int> rows;
  for (const std::optional<Well>& well : wells.well_of_text) {
    if (!well || is_met[NumberOf(*well)]) continue;
    is_met[NumberOf(*well)] = true;
    rows.insert(well->row);
    ++wells.wells;
  }
  using Form = WellColumn::Form;
  wells.form = as_numbers ? Form::kNumbers : rows.size() > 1 ? Form::kNames : Form::kNamesOfOneRow;
  wells.fill = wells.wells * 1000 / format.wells;
  return wells;
}

// Whether the wells have plates; `plate` stays empty where there is only one.
bool LayoutFinder::FindPlates(const WellColumn& wells, Column& plate) const {
  std::vector<std::size_t> keys_of_well(static_cast<std::size_t>(kLargest.wells));
  for (std::size_t key = 0; key < readings_.keys.size(); ++key) {
    if (const auto& well = WellOf(wells, key)) ++keys_of_well[NumberOf(*well)];
  }
  const bool is_one_plate = !Doubled(wells, std::nullopt);
  // On one plate, a key column with a single value is its name.
  const std::size_t most_plates =
      is_one_plate ? 1 : kPlatesPerKeyOfWell * *std::ranges::max_element(keys_of_well);

  std::vector<std::size_t> columns;
  // From the last one: sets stand before their plates.
  for (std::size_t i = readings_.columns.size(); i-- > 0;) {
    const KeyedColumn& column = readings_.columns[i];
    if (column.in_key && i != wells.column && column.texts.size() <= most_plates) {
      columns.push_back(i);
    }
  }
  std::ranges::stable_sort(columns, {},
                           [this](std::size_t i) { return readings_.columns[i].texts.size(); });
  const auto found =
      std::ranges::find_if(columns, [&](std::size_t i) { return !Doubled(wells, i); });
  if (found != columns.end()) plate = *found;
  return is_one_plate || plate;
}

// The first reading at a place that another one has already, with that one.
std::optional<std::pair<const Reading*, const Reading*>> LayoutFinder::Doubled(
    const WellColumn& wells, Column plate) const {
  PlaceSet places(readings_.readings.size());
  const auto place_of = [&](const Reading& reading) -> std::optional<std::uint64_t> {
    const auto& well = WellOf(wells, reading.key);
    return well ? std::optional(PlaceOf(reading, *well, plate)) : std::nullopt;
  };
  for (const Reading& reading : readings_.readings) {
    const std::optional<std::uint64_t> place = place_of(reading);
    if (!place || places.Insert(*place)) continue;
    // Searched only now: a set that knew the reading of every place would be twice as large, and
    // mostly nothing is double.
    const auto first = std::ranges::find_if(
        readings_.readings, [&](const Reading& each) { return place_of(each) == place; });
    return std::pair(&*first, &reading);
  }
  return std::nullopt;
}

void LayoutFinder::ExplainDoubled(const WellColumn& wells, std::size_t plate) {
  const auto doubled = Doubled(wells, plate);
  if (!doubled) return;
  const auto& [first, second] = *doubled;
  const auto place = [this](const Reading& reading) {
    return inputs_[reading.input].path + ", row " + std::to_string(reading.row);
  };
  why_not_ = "Plate \"" + readings_.columns[plate].Text(second->key) +
             "\" has more than one reading of well " + NameOf(*WellOf(wells, second->key)) +
             " in replication " + std::to_string(inputs_[second->input].replication) + " (" +
             place(*first) + "; " + place(*second) +
             "): name the columns that tell the plates and the wells apart with --plate and "
             "--well.";
}

PlateLayout LayoutFinder::Lay(const WellColumn& wells, Column plate) const {
  PlateLayout layout;
  layout.well_column = wells.column;
  layout.plate_column = plate;
  const std::size_t keys = readings_.keys.size();
  if (plate) {
    layout.plate_of_key = readings_.columns[*plate].text_of_key;
    layout.format_of_plate.resize(readings_.columns[*plate].texts.size(), wells.format);
  } else {
    layout.plate_of_key.resize(keys);
    layout.format_of_plate.resize(1, wells.format);
  }
  layout.well_of_key.reserve(keys);
  for (std::size_t key = 0; key < keys; ++key) layout.well_of_key.push_back(WellOf(wells, key));
  // Numbers have one format; of names each plate gets the smallest that holds its own.
  if (wells.format != nullptr) return layout;

  std::vector<FormatCount> formats(layout.format_of_plate.size());
  for (std::size_t key = 0; key < keys; ++key) {
    if (const auto& well = layout.well_of_key[key]) {
      formats[layout.plate_of_key[key]].Add(
          1, [&](const PlateFormat& format) { return Holds(format, *well); });
    }
  }
  std::ranges::transform(formats, layout.format_of_plate.begin(),
                         [](const FormatCount& count) { return count.Smallest(); });
  for (std::size_t key = 0; key < keys; ++key) {
    // What is left over on a plate, 5 % at most, is taken for mistakes and not drawn.
    auto& well = layout.well_of_key[key];
    if (well && !Holds(*layout.format_of_plate[layout.plate_of_key[key]], *well)) well.reset();
  }
  return layout;
}

}  // namespace

std::optional<Well> WellFromName(std::string_view text) {
  constexpr int kLetters = 26;
  text = TrimAllBlanks(text);
  const std::size_t letters = static_cast<std::size_t>(
      std::ranges::find_if_not(
          text, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }) -
      text.begin());
  if (letters == 0 || letters > 2) return std::nullopt;
  int row = 0;
  for (const char letter : text.substr(0, letters)) {
    // Letters count without a zero: AA is Z plus one, as in columns of a sheet. The bit 0x20 makes
    // small letters of capital ones.
    row = row * kLetters + ((letter | 0x20) - 'a' + 1);
  }
  const std::optional<int> column = NumberFrom(text.substr(letters), 3);
  if (!column || *column == 0) return std::nullopt;
  const Well well{row - 1, *column - 1};
  return Holds(kLargest, well) ? std::optional(well) : std::nullopt;
}

std::optional<Well> WellFromNumber(std::string_view text, const PlateFormat& format) {
  const std::optional<int> number = NumberFrom(TrimAllBlanks(text), 4);
  if (!number || *number == 0 || *number > format.wells) return std::nullopt;
  return Well{(*number - 1) / format.columns, (*number - 1) % format.columns};
}

std::string NameOf(Well well) {
  constexpr int kLetters = 26;
  std::string name;
  if (well.row >= kLetters) name += static_cast<char>('A' + well.row / kLetters - 1);
  name += static_cast<char>('A' + well.row % kLetters);
  const std::string column = std::to_string(well.column + 1);
  return name + (column.size() == 1 ? "0" : "") + column;
}

std::optional<PlateLayout> FindPlateLayout(const RunReadings& readings,
                                           const std::vector<InputRecord>& inputs,
                                           std::string_view plate, std::string_view well,
                                           std::string& why_not) {
  LayoutFinder finder(readings, inputs);
  std::optional<PlateLayout> layout = finder.Find(plate, well);
  if (!layout) why_not = finder.WhyNot();
  return layout;
}

}  // namespace korvex
