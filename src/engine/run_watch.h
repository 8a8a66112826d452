// Watches a run for what looks wrong though it can be converted, and takes down what the report
// needs. It changes nothing and refuses nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/data_sheet.h"
#include "engine/key_table.h"
#include "engine/output_table.h"
#include "engine/run_record.h"
#include "platform/file_system.h"

namespace korvex {

// Whether a measured value is none: an empty cell, or a text of blanks. Other than IsBlank it takes
// a non-breaking blank for one: no person sees a value there, though the output keeps the cell.
bool IsMissing(const CellValue& value);

// The calls come in the order of the run: sheets of batches, rows of sheets. All of them are meant
// to cost next to nothing for rows with nothing wrong.
class RunWatch {
 public:
  // Both must outlive the watch. The record names the run's columns already, and holds readings
  // when they are to be kept.
  RunWatch(RunRecord& record, const KeyTable& keys);

  // Takes down the next workbook of the run, and returns the path by which places name it. Batches
  // count from 1.
  const std::string& BeginInput(const std::string& full_name, int batch);
  // After the layout of the sheet is known; its workbook is the last input of the record. Without
  // `output` no conflicts between rows of one key are looked for.
  void BeginSheet(DataSheet& sheet, const OutputTable* output);
  // One row, with its place in the key table and its measured value.
  void Row(const KeyTable::Found& key, int row, const CellValue& value);
  // `end_row` is the first row that was not read.
  void EndSheet(int end_row);
  // What a batch lacks is known when its last sheet is read.
  void EndBatch();
  // What is known only when all keys are.
  void EndRun();
  // Of the folders inside a sub-folder, those that are not among its workbooks: a folder that is
  // named like one is refused when it is opened.
  void NoteSkippedFolders(const std::string& sub_folder, const std::vector<FolderEntry>& entries,
                          const std::vector<std::string>& workbooks);

 private:
  // An output column whose values replicates must share.
  struct SharedColumn {
    int position = 0;
    ColumnSource source;
    std::string_view name;
    bool may_lack = false;  // an earlier file had no such column
  };
  // A column of the run in the current sheet, and what its values look like in all sheets.
  struct WatchedColumn {
    std::string name;
    bool in_key = false;
    ColumnSource source;
    std::size_t values = 0;
    std::size_t well_names = 0;        // "A01"
    std::size_t named_within[3] = {};  // by plate format
    std::size_t well_numbers = 0;      // "1" to "1536"
    std::size_t numbered_within[3] = {};
    bool is_no_well = false;   // most values are no wells
    bool has_zeros = false;    // "A01"
    bool lacks_zeros = false;  // "A1"
  };

  FindingPlace Place(int row = 0, std::string column = {}, std::string detail = {}) const;
  FindingPlace PlaceOf(const KeyTable::Place& place, std::uint32_t key) const;
  std::string KeyName(std::uint32_t key) const;
  void NoteRoundedField(const std::string& field, const char* what);
  void NoteRepeatedHeader();
  void NoteMissingColumns();
  void NoteValue(std::uint32_t key, int row, const CellValue& value);
  std::uint64_t HashOfOutput() const;
  void NoteConflicts(std::uint32_t key, int row);
  void WatchNewKey();
  static void CountText(WatchedColumn& column, std::string_view text);
  static void CountNumber(WatchedColumn& column, double number);
  void KeepKey(std::uint32_t key, int row);
  void KeepReading(std::uint32_t key, int row, const CellValue& value, bool is_missing);
  void NoteLacking(std::size_t first_sheet, const std::vector<std::int16_t>& replications);
  void NoteNearEqualKeys();
  void NoteKeysOutsidePlate();
  bool MayLieOutsidePlate() const;
  RunReadings ReadingsOfKeys() const;

  RunRecord& record_;
  const KeyTable& keys_;
  DataSheet* sheet_ = nullptr;
  const OutputTable* output_ = nullptr;
  std::vector<WatchedColumn> columns_;  // the key columns, then the output columns that are none
  std::vector<SharedColumn> shared_columns_;
  std::vector<bool> lacked_;                   // by output column: a file had none
  GrowingArray<std::uint64_t> output_hashes_;  // by key, of its first row's output values
  std::size_t batch_start_ = 0;                // the first sheet of the batch
  std::vector<std::uint16_t> counts_;          // by key: its readings in the batch
  std::vector<bool> has_texts_;                // by key
  std::vector<std::unordered_map<std::string, std::uint32_t>> text_numbers_;  // by column
  std::unordered_map<std::string, std::uint32_t> reading_text_numbers_;
  std::string text_;  // scratch storage
};

}  // namespace korvex
