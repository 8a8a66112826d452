// The one sheet of the output workbook: a row for every key, and from left to right the output
// columns, a column for every replication, and the extra headers.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "engine/data_sheet.h"
#include "structure/clsArray.h"
#include "structure/clsStructure.h"
#include "structure/keyed_collection.h"
#include "workbook/spreadsheet.h"

namespace korvex {

// Rows and columns are one-based; row 1 holds the headers. What is refused here is error 17, and
// the user has been told.
class OutputTable {
 public:
  // `sheet` and `structure` must outlive the table.
  OutputTable(Worksheet& sheet, clsStructure& structure) : sheet_(sheet), structure_(structure) {}

  // Writes the output columns' headers, before any row.
  void WriteHeaders();
  // How many output columns the sample file has. A later file may lack some of them, which then
  // stay blank.
  int ColumnCount() const { return column_count_; }

  // Where a key's values go. `is_new` until its output columns have been written.
  struct KeyPlace {
    int row = 0;
    bool is_new = false;
  };
  // Begins the rows of one data sheet, in which each key may occur once.
  void BeginSheet();
  // The row of a key, which a new key gets from the next free one. Refuses a key that the sheet has
  // held already.
  KeyPlace CheckKey(const std::string& key, const DataSheet& sheet);
  // Copies the measured value into the column of the sheet's replication. Refuses to overwrite one.
  void WriteData(const std::string& key, int output_row, const DataSheet& sheet, int row);
  // Writes a new key's output columns, which takes the next free row.
  void WriteOutputColumns(int output_row, DataSheet& sheet, int row);

  // What ends every batch of files: deletes the columns without a header, and appends the extra
  // headers to the others.
  void RemoveEmptyColumns();
  void AddExtraHeaders();

  // Refuse a run, before its first file is read, whose columns the output's format will not hold:
  // those of its replications, and those that every sub-folder appends. The names of the workbooks
  // are in the order in which they will be read.
  void CheckReplicationsAhead(const std::vector<std::string>& workbook_names) const;
  void CheckFoldersAhead(const std::vector<std::string>& names_in_first_folder,
                         int folder_count) const;
  // The same between two sub-folders, from the columns that there are.
  void CheckFoldersAhead(int folders_done, int folder_count) const;

 private:
  // A key's row, 0 for none yet, and the number of the last data sheet that held the key.
  struct KeyRow {
    int row = 0;
    int last_sheet = 0;
  };
  // The column of a replication letter, 0 for none yet, and the numbers that share the letter.
  struct LetterColumn {
    int column = 0;
    std::set<std::int16_t> replications;
  };

  int ReplicationColumn(const DataSheet& sheet);
  std::string SharedLetter(std::int16_t replication);
  bool HeaderIsEmpty(int column) const;
  void CheckColumnsAhead(int columns, int folders_to_come, int folder_count) const;

  Worksheet& sheet_;
  clsStructure& structure_;
  KeyedCollection<KeyRow> key_table_;
  KeyedCollection<LetterColumn> replication_table_;
  clsArray extra_headers_;
  int column_count_ = 0;
  int next_row_ = 2;
  int sheet_number_ = 0;        // counts the data sheets of the run
  int replication_column_ = 0;  // of the current data sheet, 0 until its first row
  std::string written_text_;    // scratch storage for the text form of a value
};

}  // namespace korvex
