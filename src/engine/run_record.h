// What is known of a run when it has ended, however it ended: what it read and with which settings,
// what it wrote, what was refused and what was noticed, and on request every reading. The report is
// made from this alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/findings.h"

namespace korvex {

// An input workbook, in the order of reading.
struct InputRecord {
  std::string path;              // relative to the processing folder, with "/" between the names
  std::string full_name;         // as the file system has it
  int batch = 1;                 // its sub-folder, from 1; selected files are one batch
  std::int16_t replication = 0;  // 0 when the name has none
  std::string day;               // the field of the name as it stands; empty when there is none
  std::string date;              // of the first cell; empty when it holds none
  int first_row = 0;             // one-based row of the first reading
  int rows = 0;                  // that were read
  int unread_rows = 0;           // that hold something below the row where reading ended
  std::uint64_t size = 0;        // in bytes; as the digest, of runs that keep readings
  std::string sha256;            // lower-case hexadecimal; empty when nobody asked for it
};

// A refusal: what made a run fail, or what a check found.
struct Problem {
  std::string text;  // the fixed text of the message, lines apart by CR LF
  std::string cause;
  FindingPlace place;
};

// The cause of the problem that a stop by the user leaves.
inline constexpr char kStopCause[] = "You stopped the run; no output was written.";

// A column whose values belong to the keys: equal texts share one number. A key that has no value
// in the column has the empty text.
struct KeyedColumn {
  std::string name;    // in the inputs
  std::string header;  // in the output
  bool in_key = false;
  std::vector<std::string> texts;
  std::vector<std::uint32_t> text_of_key;  // an index into `texts` for every key

  const std::string& Text(std::size_t key) const { return texts[text_of_key[key]]; }
};

// A measured value. Errors, dates, truth values and texts that are no number keep their text.
struct Reading {
  static constexpr std::uint32_t kNumber = std::numeric_limits<std::uint32_t>::max();
  static constexpr std::uint32_t kMissing = kNumber - 1;  // the data cell is empty or blank

  std::uint32_t key = 0;          // an index into `keys`
  std::uint32_t input = 0;        // an index into `inputs`
  std::int32_t row = 0;           // of the input's sheet, one-based
  std::uint32_t text = kMissing;  // kNumber, kMissing, or an index into `reading_texts`
  double number = 0;
};

// Every reading of a run, in the order of reading.
struct RunReadings {
  std::vector<std::string> keys;     // "name=value;" of each key column, in order of appearance
  std::vector<KeyedColumn> columns;  // the key columns, then the output columns that are none
  // Those of one workbook follow one another. Each takes 24 bytes; texts stand apart and once.
  std::vector<Reading> readings;
  std::vector<std::string> reading_texts;
};

// A file that the run wrote.
struct OutputRecord {
  std::string path;  // full name
  std::uint64_t size = 0;
  std::string sha256;
  int rows = 0;  // header row included
  int columns = 0;
};

// What a run is asked for beside the settings.
struct RunOptions {
  bool wide = true;            // write the output workbook
  std::string long_form = {};  // full name of the file with one row per reading; empty for none
  bool check = false;          // go through everything and write nothing
  bool strict = false;         // findings are failures
  bool decimal_comma = false;  // measured texts like "0,110" are numbers
  bool keep_readings = false;  // for a report
  // Full names of the reports that the view writes when the run ends, however it ends.
  std::vector<std::string> reports = {};
  std::string plate_column = {};  // as the user named them; empty for found ones
  std::string well_column = {};
};

// Whole at every moment: a run that fails or is stopped leaves what was known by then.
struct RunRecord {
  enum class Outcome { kFinished, kFailed, kStopped, kChecked };

  // Takes a problem down. One that repeats the last is counted once: every row of a file can fail
  // for the same cause. Of one kind in one file the first are kept, the others counted in one that
  // says so: a wrong key can collide in every row of a campaign.
  static constexpr std::size_t kMostAlike = 20;
  void AddProblem(Problem problem);

  // A run that says nothing of its end has failed.
  Outcome outcome = Outcome::kFailed;
  std::string processing_folder;
  bool sub_folders = true;  // else selected files
  // As the settings name them, in their order.
  std::vector<std::string> key_columns;
  std::vector<std::string> output_columns;
  std::string data_column;
  RunOptions options;
  std::vector<InputRecord> inputs;
  std::size_t input_count = 0;  // that the run would have read
  Findings findings;
  std::vector<Problem> problems;
  std::optional<OutputRecord> output;  // once it is in place
  std::optional<OutputRecord> long_form;
  std::optional<RunReadings> readings;  // when a report was asked for

 private:
  struct Alike {
    std::size_t count = 0;
    std::size_t rest = 0;  // the problem that counts those that were not kept
  };

  std::map<std::string, Alike> alike_;  // by the kind of a problem, in the file of the last one
};

}  // namespace korvex
