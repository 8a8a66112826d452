// The long form of a run: one row per reading, as tools for statistics take it.
//
// Its columns are the key columns, the output columns that are no keys, and "day", "replication",
// "value", "file" and "row". Nothing in it depends on the columns of the output workbook, so that
// gaps in the replications misplace no reading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/data_sheet.h"
#include "structure/clsStructure.h"
#include "workbook/spreadsheet.h"

namespace korvex {

// What the rows are written into: a text file as they come, or a workbook.
class LongFormFile {
 public:
  virtual ~LongFormFile() = default;
  // Cells come from left to right, and row after row.
  virtual void AddCell(CellAddress place, const CellValue& value) = 0;
  virtual void EndRow() = 0;
  // `inputs` are files that it must not replace.
  virtual void Save(bool as_new, const std::vector<std::string>& inputs) = 0;
};

// Rows and columns are one-based. What fails while writing is error 1004, which names the file.
class LongForm {
 public:
  static constexpr int kOwnColumns = 5;  // behind those of the inputs

  // The file gets its place in Save(): without it, what was written is dropped, and a former file
  // stays. Make this once the folders of the run have been listed, since a temporary file may stand
  // beside the target from then on. `application` makes the workbook of an .xlsx, whose sheet gets
  // the name if it has one. Both references must outlive the long form.
  LongForm(const std::string& full_name, const std::string& sheet_name, Application& application,
           clsStructure& structure);

  // Error 1004 unless the name ends with .csv, .tsv or .xlsx.
  static void CheckName(const std::string& full_name);
  // Error 1004 when that file is one of `inputs`, which would be lost.
  static void CheckTarget(const std::string& full_name, const std::vector<std::string>& inputs);

  // Writes the headers, once, before any row: those of the columns of the sample file. A header
  // that is there already (letter case ignored) gets "_2" behind it, or "_3" ...
  void WriteHeaders();
  // Begins the rows of a sheet whose layout has been read. `file` is the text that its rows have in
  // the column "file". The sheet must outlive its rows.
  void BeginSheet(DataSheet& sheet, const std::string& file);
  // Writes the reading of a row of that sheet: `value` as it is, the other columns by the rule of
  // the output workbook. A column that the sheet lacks gives an empty cell; errors as those of
  // DataSheet::GetColumnValue.
  void Write(int row, const CellValue& value);

  // Puts the file in place. Error 1004 for a file that was read; no other member afterwards.
  void Save() { file_->Save(false, inputs_); }
  // The same, but error 58 when there is a file of that name: the rows are lost.
  void SaveAsNew() { file_->Save(true, inputs_); }

  // Of what has been written, headers included.
  int RowCount() const { return row_count_; }
  int ColumnCount() const { return static_cast<int>(columns_.size()) + kOwnColumns; }

 private:
  void AddCell(const CellValue& value);
  void EndRow();

  clsStructure& structure_;
  const std::unique_ptr<LongFormFile> file_;
  std::vector<std::string> columns_;  // by their names in the inputs
  std::vector<std::string> inputs_;   // full names
  int row_count_ = 0;
  int column_ = 0;  // of the current row, that has been filled last
  // Of the current sheet.
  DataSheet* sheet_ = nullptr;
  std::vector<ColumnSource> sources_;
  CellValue day_;
  std::string file_text_;
  std::string written_text_;  // scratch storage for the text form of a value
};

// Which readings a run has met, by key and exact replication number: what shows two readings of one
// place when there is no output workbook in which the second would meet the first.
class TakenReadings {
 public:
  // Takes the place of a reading; keys count from 0. False when another has taken it already. A
  // blank takes no place, but meets what has.
  bool Take(std::size_t key, std::int16_t replication, const CellValue& value);

 private:
  // Readings of one key are chained, the last one first.
  struct Taken {
    std::int16_t replication;
    std::uint32_t next;  // one more than its index in taken_; 0 at the end
  };

  std::vector<Taken> taken_;
  std::vector<std::uint32_t> last_of_key_;  // as Taken::next
};

}  // namespace korvex
