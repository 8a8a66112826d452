#include "engine/run_watch.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <utility>

#include "engine/near_equal_keys.h"
#include "engine/plate_layout.h"
#include "files/folder_listing.h"
#include "files/report_paths.h"
#include "platform/ciphers.h"
#include "platform/error.h"
#include "platform/services.h"
#include "text/text.h"
#include "text/utf8.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

using Kind = FindingKind;

constexpr std::uint64_t kNotInOutput = 1;
constexpr std::size_t kLongestDetail = 60;  // bytes of a cell's text in a place
constexpr std::size_t kLongestColumn = 3;   // digits of a well's column
constexpr std::size_t kColumnSample =
    100;  // values after which a column may turn out to hold no wells

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// "3", "-1", " 12 ": what counts as itself.
bool IsWholeNumber(std::string_view text) {
  text = TrimBlanks(text);
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  return !text.empty() && std::ranges::all_of(text, IsAsciiDigit);
}

bool CountsAsNumber(const std::string& text) {
  return ParseNumber(text).has_value();
}

std::string Quoted(std::string_view text) {
  return "\"" + Shortened(text, kLongestDetail) + "\"";
}

bool IsBlankText(std::string_view text) {
  while (const std::size_t length = BlankLength(text)) text.remove_prefix(length);
  return text.empty();
}

// A number as people write it: with a decimal comma, or blanks between the digits.
bool IsNumberAsText(std::string_view text) {
  std::string digits;
  while (!text.empty()) {
    const std::size_t blank = BlankLength(text);
    if (blank == 0) digits.push_back(text.front());
    text.remove_prefix(std::max(blank, std::size_t{1}));
  }
  if (ParseNumber(digits)) return true;
  std::ranges::replace(digits, ',', '.');
  return ParseNumber(digits).has_value();
}

// Whether a row says in an output column what the output holds already. Letter case does not count:
// it makes no other compound.
bool IsSameOutput(const CellValue& value, const CellValue& written) {
  if (value.kind == written.kind && value.number == written.number && value.text == written.text) {
    return true;
  }
  if (IsMissing(value) || IsMissing(written)) return IsMissing(value) && IsMissing(written);
  std::string text;
  const CellValue as_written = WrittenAsText(value, text);
  return EqualText(CellText(as_written), CellText(written));
}

// The format's place in kPlateFormats that holds the well; those above it hold it, too.
std::size_t SmallestFormat(Well well) {
  std::size_t format = 0;
  while (format + 1 < std::size(kPlateFormats) &&
         (well.row >= kPlateFormats[format].rows || well.column >= kPlateFormats[format].columns)) {
    ++format;
  }
  return format;
}

}  // namespace

bool IsMissing(const CellValue& value) {
  return value.kind == CellKind::kEmpty ||
         (value.kind == CellKind::kText && IsBlankText(value.text));
}

RunWatch::RunWatch(RunRecord& record, const KeyTable& keys) : record_(record), keys_(keys) {
  const auto add = [&](const std::string& name, bool in_key) {
    const bool known = std::ranges::any_of(
        columns_, [&](const WatchedColumn& column) { return EqualText(column.name, name); });
    if (!known) columns_.push_back({.name = name, .in_key = in_key, .source = {}});
  };
  for (const std::string& name : record.key_columns) add(name, true);
  for (const std::string& name : record.output_columns) add(name, false);
  lacked_.resize(record.output_columns.size());
  if (!record.readings) return;
  text_numbers_.resize(columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    KeyedColumn& column = record.readings->columns.emplace_back();
    column.name = columns_[i].name;
    column.header = HeaderOf(column.name);
    column.in_key = columns_[i].in_key;
  }
}

FindingPlace RunWatch::Place(int row, std::string column, std::string detail) const {
  return {record_.inputs.back().path, row, {}, std::move(column), std::move(detail)};
}

FindingPlace RunWatch::PlaceOf(const KeyTable::Place& place, std::uint32_t key) const {
  return {record_.inputs[place.input].path, place.row, KeyName(key), {}, {}};
}

std::string RunWatch::KeyName(std::uint32_t key) const {
  return std::string(keys_.Name(key));
}

const std::string& RunWatch::BeginInput(const std::string& full_name, int batch) {
  const FileSystem& files = *Platform().files;
  InputRecord& input = record_.inputs.emplace_back();
  input.path = PathFrom(record_.processing_folder, full_name);
  input.full_name = full_name;
  input.batch = batch;
  if (!record_.readings) return input.path;
  if (const auto version = files.VersionOf(full_name)) {
    input.size = static_cast<std::uint64_t>(version->size);
  }
  // A file that cannot be read is refused in a moment.
  Attempt([&] { input.sha256 = Sha256OfFile(files, full_name); });
  return input.path;
}

void RunWatch::BeginSheet(DataSheet& sheet, const OutputTable* output) {
  sheet_ = &sheet;
  output_ = output;
  for (WatchedColumn& column : columns_) column.source = sheet.SourceOf(column.name);
  shared_columns_.clear();
  for (const OutputColumn& column : sheet.OutputColumns()) {
    const auto index = static_cast<std::size_t>(column.position - 1);
    if (column.source.kind != ColumnSource::Kind::kSheetColumn || index >= lacked_.size()) continue;
    const std::string& name = record_.output_columns[index];
    if (ContainsText(record_.key_columns, name)) continue;
    shared_columns_.push_back({column.position, column.source, name, lacked_[index]});
  }
  InputRecord& input = record_.inputs.back();
  input.replication = sheet.Replication();
  input.day = sheet.DayField();
  input.date = sheet.DateOrNothing();
  NoteRoundedField(sheet.ReplicationField(), "replication");
  const auto is_day = [](const WatchedColumn& column) {
    return column.source.kind == ColumnSource::Kind::kDayNum;
  };
  if (!record_.options.long_form.empty() || std::ranges::any_of(columns_, is_day)) {
    NoteRoundedField(sheet.DayField(), "day");
  }
  NoteRepeatedHeader();
  NoteMissingColumns();
}

void RunWatch::NoteRoundedField(const std::string& field, const char* what) {
  if (IsWholeNumber(field) || !CountsAsNumber(field)) return;
  record_.findings.Note(Kind::kRoundedNumber, [&] {
    return Place(
        0, {},
        std::string(what) + " " + Quoted(field) + " counts as " + std::to_string(ToInt16(field)));
  });
}

// The header row is the lowest row that can be one: every row above it is left out.
void RunWatch::NoteRepeatedHeader() {
  const Worksheet& sheet = sheet_->Sheet();
  const int header = sheet_->HeaderRow();
  const auto same = [&](int row, int column) {
    return EqualText(CellText(sheet.Value(row, column)), CellText(sheet.Value(header, column)));
  };
  for (int row = 1; row < header; ++row) {
    if (!same(row, 1) || !same(row, sheet_->DataColumn())) continue;
    record_.findings.Note(Kind::kRepeatedHeader, [&] {
      return Place(header, {}, "the rows above row " + std::to_string(header) + " were not read");
    });
    return;
  }
}

void RunWatch::NoteMissingColumns() {
  for (const WatchedColumn& column : columns_) {
    if (column.source.kind != ColumnSource::Kind::kNothing) continue;
    const auto is_it = [&](const std::string& name) { return EqualText(name, column.name); };
    if (ContainsText(record_.key_columns, column.name)) {
      record_.findings.Note(Kind::kMissingKeyColumn, [&] { return Place(0, column.name); });
    }
    const auto output = std::ranges::find_if(record_.output_columns, is_it);
    if (output == record_.output_columns.end()) continue;
    lacked_[static_cast<std::size_t>(output - record_.output_columns.begin())] = true;
    record_.findings.Note(Kind::kMissingOutputColumn, [&] { return Place(0, column.name); });
  }
}

void RunWatch::Row(const KeyTable::Found& key, int row, const CellValue& value) {
  const bool is_missing = IsMissing(value);
  if (!is_missing && value.kind != CellKind::kNumber) {
    NoteValue(key.key, row, value);
  }
  // A column that is read of no row may refuse the file when it is asked for: it is not watched.
  const bool has_columns = sheet_->HasColumnValues();
  const std::uint64_t hash = has_columns && output_ != nullptr ? HashOfOutput() : 0;
  // A check refuses rows whose keys may come again: the output holds no values to compare with.
  if (key.key >= output_hashes_.size()) output_hashes_.resize(key.key + 1, kNotInOutput);
  if (key.is_new) {
    output_hashes_[key.key] = hash;
    if (has_columns) WatchNewKey();
  } else if (has_columns && output_hashes_[key.key] != hash &&
             output_hashes_[key.key] != kNotInOutput) {
    NoteConflicts(key.key, row);
  }
  if (record_.readings) KeepReading(key.key, row, value, is_missing);
}

void RunWatch::NoteValue(std::uint32_t key, int row, const CellValue& value) {
  const bool is_number = value.kind == CellKind::kText && IsNumberAsText(value.text);
  record_.findings.Note(is_number ? Kind::kNumberAsText : Kind::kNotANumber, [&] {
    FindingPlace place = Place(row, record_.data_column, Quoted(CellText(value)));
    place.key = KeyName(key);
    return place;
  });
}

// Of the values as the sheet has them. Rows that say the same mostly say it in the same form, which
// is quicker to see than by comparing each with the output.
std::uint64_t RunWatch::HashOfOutput() const {
  std::uint64_t hash = 0;
  const auto mix = [&](std::uint64_t bits) {
    hash = (hash ^ bits) * 0x9E37'79B9'7F4A'7C15;
    hash ^= hash >> 29;
  };
  for (const SharedColumn& column : shared_columns_) {
    const CellValue value = sheet_->SheetColumnValue(column.source);
    mix(static_cast<std::uint64_t>(value.kind));
    if (value.kind == CellKind::kText) {
      std::string_view text = value.text;
      for (; text.size() >= sizeof(std::uint64_t); text.remove_prefix(sizeof(std::uint64_t))) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data(), sizeof bytes);
        mix(bytes);
      }
      std::uint64_t bytes = text.size() + 1;
      for (const char c : text) bytes = bytes << 8 | static_cast<unsigned char>(c);
      mix(bytes);
    } else {
      mix(std::bit_cast<std::uint64_t>(value.number));
    }
  }
  return hash;
}

void RunWatch::NoteConflicts(std::uint32_t key, int row) {
  for (const SharedColumn& column : shared_columns_) {
    const CellValue value = sheet_->SheetColumnValue(column.source);
    const CellValue first = output_->OutputValue(key, column.position);
    if (IsSameOutput(value, first)) continue;
    if (column.may_lack && first.kind == CellKind::kEmpty) continue;
    record_.findings.Note(Kind::kConflictingOutput, [&] {
      FindingPlace place =
          Place(row, std::string(column.name),
                Quoted(CellText(value)) + " here, " + Quoted(CellText(first)) + " in the output");
      place.key = KeyName(key);
      return place;
    });
  }
}

// How the values of every column look, so that only a campaign in which something can be wrong is
// looked at more closely at the end.
void RunWatch::WatchNewKey() {
  for (WatchedColumn& column : columns_) {
    if (column.source.kind != ColumnSource::Kind::kSheetColumn || column.is_no_well) continue;
    const CellValue value = sheet_->SheetColumnValue(column.source);
    ++column.values;
    if (value.kind == CellKind::kNumber) {
      CountNumber(column, value.number);
    } else if (value.kind == CellKind::kText) {
      CountText(column, value.text);
    }
    // Mixed forms of a few wells make keys differ; elsewhere a column without wells is done with.
    column.is_no_well = !column.in_key && column.values >= kColumnSample &&
                        2 * (column.well_names + column.well_numbers) < column.values;
  }
}

// Every text of every key comes here: the usual forms are told apart without a call.
void RunWatch::CountText(WatchedColumn& column, std::string_view text) {
  if (text.empty() || text.size() > kLongestWellText) return;
  const auto is_blank = [](char c) { return c == ' ' || c == kNonBreakingBlank[0]; };
  std::size_t letters = 0;
  while (letters < text.size() && IsLetter(text[letters])) ++letters;
  if (letters == text.size() || letters > 2) return;
  if (letters > 0 && IsAsciiDigit(text[letters])) {
    const bool has_end = text.size() <= letters + kLongestColumn;
    if (!has_end && !is_blank(text[text.size() - 1]) && text.back() != kNonBreakingBlank[1]) return;
  } else if (!IsAsciiDigit(text[0]) && !is_blank(text[0])) {
    return;
  }
  if (const auto well = WellFromName(text)) {
    ++column.well_names;
    ++column.named_within[SmallestFormat(*well)];
    const bool has_zero = text[text.find_first_of("0123456789")] == '0';
    column.has_zeros |= has_zero;
    column.lacks_zeros |= !has_zero && well->column < 9;
  } else if (IsWholeNumber(text)) {
    CountNumber(column, ParseNumber(text).value_or(0));
  }
}

void RunWatch::CountNumber(WatchedColumn& column, double number) {
  if (number != static_cast<double>(static_cast<int>(std::clamp(number, 0.0, 1e6)))) return;
  const auto format = std::ranges::find_if(
      kPlateFormats, [&](const PlateFormat& plate) { return number <= plate.wells; });
  if (number < 1 || format == std::end(kPlateFormats)) return;
  ++column.well_numbers;
  ++column.numbered_within[format - std::begin(kPlateFormats)];
}

// A key has its texts from its first row that was not refused, and empty ones until then.
void RunWatch::KeepKey(std::uint32_t key, int row) {
  RunReadings& kept = *record_.readings;
  has_texts_.resize(std::max<std::size_t>(key + 1, has_texts_.size()));
  if (has_texts_[key]) return;
  has_texts_[key] = true;
  while (kept.keys.size() <= key) {
    kept.keys.push_back(KeyName(static_cast<std::uint32_t>(kept.keys.size())));
  }
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    KeyedColumn& column = kept.columns[i];
    const auto number_of = [&](const std::string& text) {
      const auto [entry, added] =
          text_numbers_[i].try_emplace(text, static_cast<std::uint32_t>(column.texts.size()));
      if (added) column.texts.push_back(text);
      return entry->second;
    };
    if (column.text_of_key.size() < key) column.text_of_key.resize(key, number_of({}));
    text_.clear();
    AppendCellText(sheet_->GetColumnValue(columns_[i].source, row), text_);
    column.text_of_key.resize(kept.keys.size());
    column.text_of_key[key] = number_of(text_);
  }
}

void RunWatch::KeepReading(std::uint32_t key, int row, const CellValue& value, bool is_missing) {
  RunReadings& kept = *record_.readings;
  KeepKey(key, row);
  Reading reading;
  reading.key = key;
  reading.input = static_cast<std::uint32_t>(record_.inputs.size() - 1);
  reading.row = row;
  if (value.kind == CellKind::kNumber) {
    reading.text = Reading::kNumber;
    reading.number = value.number;
  } else if (!is_missing) {
    text_.clear();
    AppendCellText(value, text_);
    const auto [entry, added] = reading_text_numbers_.try_emplace(
        text_, static_cast<std::uint32_t>(kept.reading_texts.size()));
    if (added) kept.reading_texts.push_back(text_);
    reading.text = entry->second;
  }
  kept.readings.push_back(reading);
}

void RunWatch::EndSheet(int end_row) {
  InputRecord& input = record_.inputs.back();
  input.first_row = sheet_->FirstRow();
  input.rows = end_row - sheet_->FirstRow();
  for (int row = end_row; row <= sheet_->LastRow(); ++row) {
    if (sheet_->Sheet().CountA(row) == 0) continue;
    ++input.unread_rows;
    record_.findings.Note(Kind::kUnreadRows, [&] { return Place(row); });
  }
  sheet_ = nullptr;
}

// A key lacks a reading when it has fewer than the batch has replications. Only then is it worth
// finding out which.
void RunWatch::EndBatch() {
  const std::size_t first = std::exchange(batch_start_, keys_.Sheets().size());
  std::vector<std::int16_t> replications;
  for (std::size_t sheet = first; sheet < batch_start_; ++sheet) {
    if (keys_.ReadingsOf(sheet) > 0) replications.push_back(keys_.Sheets()[sheet].replication);
  }
  std::ranges::sort(replications);
  replications.erase(std::unique(replications.begin(), replications.end()), replications.end());

  counts_.assign(keys_.Count(), 0);
  for (std::size_t sheet = first; sheet < batch_start_; ++sheet) {
    keys_.ForEachReading(sheet, [&](std::uint32_t key, bool is_missing, int) {
      if (!is_missing) ++counts_[key];
    });
  }
  bool is_complete = true;
  for (std::size_t sheet = first; sheet < batch_start_ && is_complete; ++sheet) {
    keys_.ForEachReading(sheet, [&](std::uint32_t key, bool, int) {
      is_complete = is_complete && counts_[key] == replications.size();
    });
  }
  if (!is_complete) NoteLacking(first, replications);
}

// The keys in the order in which the batch met them, and for each the replications without a value:
// where a row is there but blank, the place is that row, else the key's first.
void RunWatch::NoteLacking(std::size_t first_sheet, const std::vector<std::int16_t>& replications) {
  struct Known {
    std::int16_t replication;
    bool is_missing;
    KeyTable::Place place;
  };
  std::unordered_map<std::uint32_t, std::vector<Known>> known;
  std::vector<std::uint32_t> order;
  for (std::size_t sheet = first_sheet; sheet < batch_start_; ++sheet) {
    const KeyTable::Sheet& of = keys_.Sheets()[sheet];
    keys_.ForEachReading(sheet, [&](std::uint32_t key, bool is_missing, int row) {
      if (counts_[key] == replications.size()) return;
      std::vector<Known>& rows = known[key];
      if (rows.empty()) order.push_back(key);
      rows.push_back({of.replication, is_missing, {of.input, row}});
    });
  }
  for (const std::uint32_t key : order) {
    const std::vector<Known>& rows = known[key];
    for (const std::int16_t replication : replications) {
      const auto is_read = [&](const Known& row) {
        return row.replication == replication && !row.is_missing;
      };
      if (std::ranges::any_of(rows, is_read)) continue;
      const auto blank = std::ranges::find(rows, replication, &Known::replication);
      const bool is_blank = blank != rows.end();
      record_.findings.Note(Kind::kIncompleteReplication, [&] {
        FindingPlace place = PlaceOf(is_blank ? blank->place : rows.front().place, key);
        if (is_blank) place.column = record_.data_column;
        place.detail = "replication " + std::to_string(replication) +
                       (is_blank ? " is blank here" : " is missing");
        return place;
      });
    }
  }
}

void RunWatch::EndRun() {
  NoteNearEqualKeys();
  if (MayLieOutsidePlate()) NoteKeysOutsidePlate();
}

void RunWatch::NoteNearEqualKeys() {
  const bool mixed_wells = std::ranges::any_of(
      columns_, [](const WatchedColumn& column) { return column.has_zeros && column.lacks_zeros; });
  for (const auto& near_equal : NearEqualKeys(keys_, record_.key_columns, mixed_wells)) {
    const std::uint32_t first = near_equal.first;
    const std::uint32_t second = near_equal.second;
    record_.findings.Note(Kind::kNearEqualKeys, [&] {
      FindingPlace place{{}, 0, KeyName(second), {}, "beside " + Quoted(KeyName(first))};
      if (const auto met = keys_.FindRow(second)) {
        place.file = record_.inputs[met->input].path;
        place.row = met->row;
      }
      return place;
    });
  }
}

// By the looks of the columns, since finding the plates takes time: whether a column of wells, or
// of something very like it, may name a well that its plate does not have. No plate has such a well
// where all wells are on the smallest format, and where a format has four times the wells of the
// one below it: then its plates are evenly filled.
bool RunWatch::MayLieOutsidePlate() const {
  if (!record_.options.well_column.empty()) return true;
  const auto are_nearly_all = [](std::size_t part, std::size_t all) {
    return all > 0 && part * 10 >= all * 9;
  };
  return std::ranges::any_of(columns_, [&](const WatchedColumn& column) {
    if (are_nearly_all(column.well_names, column.values)) {
      const auto& [on_96, on_384, on_1536] = column.named_within;
      const bool is_even = on_1536 == 0 ? on_384 == 0 || on_384 == 3 * on_96
                                        : on_384 == 3 * on_96 && on_1536 == 3 * (on_96 + on_384);
      if (!is_even || column.well_names < column.values) return true;
    }
    if (!are_nearly_all(column.well_numbers, column.values)) return false;
    std::size_t held = 0;
    for (const std::size_t count : column.numbered_within) {
      held += count;
      if (are_nearly_all(held, column.values)) break;
    }
    return held < column.values;
  });
}

void RunWatch::NoteKeysOutsidePlate() {
  std::string why_not;
  const RunReadings own = record_.readings ? RunReadings() : ReadingsOfKeys();
  const RunReadings& readings = record_.readings ? *record_.readings : own;
  const auto layout = FindPlateLayout(readings, record_.inputs, record_.options.plate_column,
                                      record_.options.well_column, why_not);
  if (!layout) return;
  const KeyedColumn& wells = readings.columns[layout->well_column];
  for (std::uint32_t key = 0; key < keys_.Count(); ++key) {
    if (layout->well_of_key[key]) continue;
    record_.findings.Note(Kind::kKeyOutsidePlate, [&] {
      const auto met = keys_.FindRow(key);
      FindingPlace place = PlaceOf(met.value_or(KeyTable::Place()), key);
      place.column = wells.name;
      place.detail = Quoted(wells.Text(key)) + " is no well of a plate with " +
                     std::to_string(layout->format_of_plate[layout->plate_of_key[key]]->wells);
      return place;
    });
  }
}

// What a run that keeps no readings still knows of them: the keys say their columns' values, the
// output the others.
RunReadings RunWatch::ReadingsOfKeys() const {
  RunReadings readings;
  const auto add = [](KeyedColumn& column, std::unordered_map<std::string, std::uint32_t>& numbers,
                      std::string text) {
    const auto [entry, added] =
        numbers.try_emplace(std::move(text), static_cast<std::uint32_t>(column.texts.size()));
    if (added) column.texts.push_back(entry->first);
    column.text_of_key.push_back(entry->second);
  };
  std::vector<std::unordered_map<std::string, std::uint32_t>> numbers(columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    KeyedColumn& column = readings.columns.emplace_back();
    column.name = columns_[i].name;
    column.in_key = columns_[i].in_key;
  }
  for (std::uint32_t key = 0; key < keys_.Count(); ++key) {
    readings.keys.push_back(KeyName(key));
    std::string_view rest = keys_.Name(key);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      std::string text;
      if (readings.columns[i].in_key) {
        const std::string label = columns_[i].name + "=";
        if (rest.starts_with(label)) {
          rest.remove_prefix(label.size());
          // A value may hold ";": it ends where the next column begins, or the key ends.
          std::size_t end = rest.size() - 1;
          if (i + 1 < record_.key_columns.size()) {
            const std::size_t next = rest.find(";" + columns_[i + 1].name + "=");
            if (next != std::string_view::npos) end = next;
          }
          text = rest.substr(0, end);
          rest.remove_prefix(end + 1);
        }
      } else if (output_ != nullptr) {
        const auto name = std::ranges::find_if(record_.output_columns, [&](const auto& other) {
          return EqualText(other, columns_[i].name);
        });
        const auto position = static_cast<int>(name - record_.output_columns.begin()) + 1;
        text = CellText(output_->OutputValue(key, position));
      }
      add(readings.columns[i], numbers[i], std::move(text));
    }
  }
  for (std::size_t sheet = 0; sheet < keys_.Sheets().size(); ++sheet) {
    const std::uint32_t input = keys_.Sheets()[sheet].input;
    keys_.ForEachReading(sheet, [&](std::uint32_t key, bool is_missing, int row) {
      Reading reading;
      reading.key = key;
      reading.input = input;
      reading.row = row;
      if (!is_missing) reading.text = Reading::kNumber;
      readings.readings.push_back(reading);
    });
  }
  return readings;
}

void RunWatch::NoteSkippedFolders(const std::string& sub_folder,
                                  const std::vector<FolderEntry>& entries,
                                  const std::vector<std::string>& workbooks) {
  for (const FolderEntry& entry : entries) {
    if (!entry.is_folder || entry.is_hidden) continue;
    if (std::ranges::find(workbooks, entry.name) != workbooks.end()) continue;
    record_.findings.Note(Kind::kSkippedFolder, [&] {
      return FindingPlace{sub_folder + "/" + entry.name, 0, {}, {}, {}};
    });
  }
}

}  // namespace korvex
