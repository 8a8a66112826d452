// The sheet "data" of one input workbook, while its rows are read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "structure/clsStructure.h"
#include "workbook/spreadsheet.h"

namespace korvex {

// Where the values of a column come from: a column of the sheet, or what the file supplies for one
// of the columns that no sheet holds. A column that is neither gives empty texts.
struct ColumnSource {
  enum class Kind { kSheetColumn, kDate, kFilename, kDayNum, kNothing };
  Kind kind = Kind::kNothing;
  int sheet_column = 0;
  std::size_t index = 0;  // of the sheet column among those that are read of every row
};

// Whether a cell is empty or holds nothing but blanks.
bool IsBlank(const CellValue& value);

// A column that is copied to the output, and its position there.
struct OutputColumn {
  int position = 0;
  ColumnSource source;
};

// Rows and columns are one-based. Texts of cell values belong to this object or to the workbook.
class DataSheet {
 public:
  // The available columns of `structure` are those of this workbook, which has a sheet "data". Both
  // must outlive this object. `decimal_comma`: measured texts like "0,110" are numbers.
  DataSheet(Workbook& workbook, clsStructure& structure, bool decimal_comma = false);

  // Its position among the sheets of its workbook, and their number.
  int Index() const { return sheet_.Index(); }
  int SheetCount() const { return workbook_.WorksheetCount(); }

  // Finds the header row, the replication number and the columns, once for all rows; to be called
  // before any of the members below. `output_columns` is the number of columns that the output was
  // begun with. Error 17 (told) without a replication number; error 1004 without the data column or
  // with an output column for which the output has none.
  void ReadLayout(int output_columns);

  std::int16_t Replication() const { return replication_; }
  const std::vector<OutputColumn>& OutputColumns() const { return output_columns_; }
  int HeaderRow() const { return header_row_; }
  int FirstRow() const { return header_row_ + 1; }
  // The last row that holds anything.
  int LastRow() const { return last_row_; }
  int DataColumn() const { return data_column_; }
  // Goes to a row. Whether the data go on in it: they end at a blank in the first column. The
  // members below that take a row are quick for this one.
  bool HasRow(int row);

  // Replaces `key` by the row's key, "name=value;" for every key column in order.
  void BuildKey(int row, std::string& key);
  // Whether `SheetColumnValue` may be asked for the current row: not in a sheet with cells whose
  // values refuse the file when somebody asks for them. The source is a sheet column.
  bool HasColumnValues() const { return has_row_values_; }
  CellValue SheetColumnValue(const ColumnSource& source) const { return row_values_[source.index]; }
  // Error 17 (told) for a date that cannot be read, 9 or 13 for a day number.
  CellValue GetColumnValue(const ColumnSource& source, int row);
  // The value of the data column: as it stands, or the number that a decimal comma made of a text.
  CellValue MeasuredValue(int row) const;
  // Where the values of a column of that name come from in this sheet. To be asked before its rows
  // are read.
  ColumnSource SourceOf(const std::string& name);
  const Worksheet& Sheet() const { return sheet_; }
  // The day number in the file's name; none where that has none, or one that is no number.
  std::optional<std::int16_t> Day() const;

  // The fields of the workbook's name that hold its day and its replication, as they stand; empty
  // where the name has none.
  std::string DayField() const;
  std::string ReplicationField() const;
  // The text of the first cell up to a blank, its date; empty when there is none.
  std::string DateOrNothing() const;

  std::string FullName() const;
  // The form in which messages name the workbook.
  std::string DisplayPath() const;

  // The replication number in "<XXX>-<X>-<REPLICATION-NUM>.xls"; 0 for a name without one.
  static std::int16_t ReplicationOf(const std::string& workbook_name);

 private:
  struct KeyColumn {
    std::string label;  // "name="
    ColumnSource source;
    // The number that was last asked for, and its text: all wells of a plate have its number.
    std::optional<double> number = {};
    std::string number_text = {};
  };

  static void AppendNumberText(double number, KeyColumn& column, std::string& key);
  // Raises what ReadLayout raises for columns.
  void FindColumns(int output_columns);
  // Has a column read of every row. Returns its index in row_values_.
  std::size_t ReadAlways(int sheet_column);
  CellValue ValueOf(int row, int sheet_column, std::size_t index) const {
    if (row == current_row_ && has_row_values_) return row_values_[index];
    return sheet_.Value(row, sheet_column);
  }
  std::int16_t GetReplicationNum() const;
  std::string GetDate() const;
  std::int16_t GetDayNum() const;

  Workbook& workbook_;
  Worksheet& sheet_;
  clsStructure& structure_;
  const bool decimal_comma_;
  int header_row_ = 0;
  int last_row_ = 0;
  int data_column_ = 0;
  std::vector<int> read_columns_;  // of every row: the first, the data column, all sources
  std::size_t data_index_ = 0;
  int current_row_ = 0;
  bool has_row_values_ = false;  // of the current row
  std::vector<CellValue> row_values_;
  std::int16_t replication_ = 0;
  std::vector<KeyColumn> key_columns_;
  std::vector<OutputColumn> output_columns_;
  // Each is made when a row first needs it.
  std::optional<std::string> date_;
  std::optional<std::string> filename_;
  std::optional<std::string> day_num_;
};

}  // namespace korvex
