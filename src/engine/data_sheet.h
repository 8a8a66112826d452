// The sheet "data" of one input workbook, while its rows are read.
#pragma once

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
};

// A column that is copied to the output, and its position there.
struct OutputColumn {
  int position = 0;
  ColumnSource source;
};

// Rows and columns are one-based. Texts of cell values belong to this object or to the workbook.
class DataSheet {
 public:
  // The available columns of `structure` are those of this workbook, which has a sheet "data". Both
  // must outlive this object.
  DataSheet(Workbook& workbook, clsStructure& structure);

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
  int FirstRow() const { return header_row_ + 1; }
  // Whether the data go on in this row: they end at a blank in the first column.
  bool HasRow(int row) const;

  // Replaces `key` by the row's key, "name=value;" for every key column in order.
  void BuildKey(int row, std::string& key);
  // Error 17 (told) for a date that cannot be read, 9 or 13 for a day number.
  CellValue GetColumnValue(const ColumnSource& source, int row);
  CellValue MeasuredValue(int row) const { return sheet_.Value(row, data_column_); }

  // The form in which messages name the workbook.
  std::string DisplayPath() const;

  // The replication number in "<XXX>-<X>-<REPLICATION-NUM>.xls"; 0 for a name without one.
  static std::int16_t ReplicationOf(const std::string& workbook_name);

 private:
  struct KeyColumn {
    std::string label;  // "name="
    ColumnSource source;
  };

  void FindColumns(int output_columns);
  ColumnSource FindColumn(const std::string& name);
  std::int16_t GetReplicationNum() const;
  std::string GetDate() const;
  std::int16_t GetDayNum() const;
  std::string FullName() const;

  Workbook& workbook_;
  Worksheet& sheet_;
  clsStructure& structure_;
  int header_row_ = 0;
  int last_row_ = 0;
  int data_column_ = 0;
  std::int16_t replication_ = 0;
  std::vector<KeyColumn> key_columns_;
  std::vector<OutputColumn> output_columns_;
  // Each is made when a row first needs it.
  std::optional<std::string> date_;
  std::optional<std::string> filename_;
  std::optional<std::string> day_num_;
};

}  // namespace korvex
