// The one sheet of the output workbook: a row for every key, and from left to right the output
// columns, a column for every replication, and the extra headers.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "engine/data_sheet.h"
#include "engine/findings.h"
#include "structure/clsArray.h"
#include "structure/clsStructure.h"
#include "structure/keyed_collection.h"
#include "workbook/spreadsheet.h"

namespace korvex {

// The header under which a column is written: of some columns the output has another name.
std::string HeaderOf(const std::string& column);
// What a cell holds after the text of `value` was written into it. A number becomes the number that
// its text reads as, which has at most 15 digits. `text` is scratch storage, which the result may
// refer to.
CellValue WrittenAsText(const CellValue& value, std::string& text);
// The character whose code is 64 + the replication number: "A" for 1, "B" for 2. Error 5 for a
// number without one.
std::string ReplicationLetter(std::int16_t replication);

// Rows and columns are one-based; row 1 holds the headers, and the key number 0 has the row below.
// What is refused here is error 17, and the user has been told.
class OutputTable {
 public:
  // Both must outlive the table.
  OutputTable(Worksheet& sheet, clsStructure& structure) : sheet_(sheet), structure_(structure) {}

  // Writes the output columns' headers, before any row.
  void WriteHeaders();
  // How many output columns the sample file has. A later file may lack some of them, which then
  // stay blank.
  int ColumnCount() const { return column_count_; }

  // Begins the rows of one data sheet. `file` names its workbook in findings.
  void BeginSheet(const std::string& file, int batch);
  // Copies a measured value into the column of the sheet's replication. False when there is one
  // already, which stays. Refuses data whose column has lost its header.
  bool WriteData(std::uint32_t key, const DataSheet& sheet, const CellValue& value);
  // Writes a new key's output columns.
  void WriteOutputColumns(std::uint32_t key, DataSheet& sheet, int row);
  // What the output holds for a key in one of the output columns, which never move.
  CellValue OutputValue(std::uint32_t key, int position) const {
    return sheet_.Value(RowOf(key), position);
  }
  // Explains why a cell can be taken although no other file has the replication number: letters are
  // compared without their case, so that 33 ("a") goes to the column of 1 ("A"). Empty where no
  // other replication shares the letter.
  std::string SharedLetter(std::int16_t replication);

  // What ends every batch of files: deletes the columns without a header, and appends the extra
  // headers to the others.
  void RemoveEmptyColumns();
  void AddExtraHeaders();
  // Once the columns have moved for the last time: replications that do not stand below their
  // letter, and letters that additional headers have taken.
  void NoteMisplaced(Findings& findings) const;

  // Refuse a run, before its first file is read, whose columns the output's format will not hold:
  // those of its replications, and those that every sub-folder appends. The names of the workbooks
  // are in the order in which they will be read.
  void CheckReplicationsAhead(const std::vector<std::string>& workbook_names) const;
  void CheckFoldersAhead(const std::vector<std::string>& names_in_first_folder,
                         int folder_count) const;
  // The same between two sub-folders, from the columns that there are.
  void CheckFoldersAhead(int folders_done, int folder_count) const;

 private:
  // The column of a replication letter, 0 for none yet, and the numbers that share the letter.
  struct LetterColumn {
    int column = 0;
    std::set<std::int16_t> replications;
  };

  // The readings of one replication in one batch, and where they stand now.
  struct Placed {
    std::int16_t replication = 0;
    int batch = 0;
    int column = 0;             // 0 once the column has been deleted
    std::string file;           // the first of them
    std::string taken_by = {};  // the additional header that was written over the letter
  };

  static int RowOf(std::uint32_t key) { return static_cast<int>(key) + 2; }
  int ReplicationColumn(const DataSheet& sheet);
  void TakeDownPlace(std::int16_t replication, int column);
  bool HeaderIsEmpty(int column) const;
  void CheckColumnsAhead(int columns, int folders_to_come, int folder_count) const;

  Worksheet& sheet_;
  clsStructure& structure_;
  KeyedCollection<LetterColumn> replication_table_;
  clsArray extra_headers_;
  int column_count_ = 0;
  std::vector<Placed> placed_;
  std::string file_;  // of the current data sheet
  int batch_ = 0;
  int replication_column_ = 0;  // of the current data sheet, 0 until its first row
  std::vector<std::optional<CellValue>> of_file_;
  std::string written_text_;  // scratch storage for the text form of a value
};

}  // namespace korvex
