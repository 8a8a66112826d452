#include "engine/data_sheet.h"

#include <algorithm>

#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "structure/basFuncs_workbooks.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

// The fields of "<XXX>-<X>-<REPLICATION-NUM>.xls": the last two are the day and the replication.
std::vector<std::string> FileNameFields(const std::string& workbook_name) {
  return Split(SharedFileSys().DropExtention(workbook_name), "-");
}

bool IsBlank(const CellValue& value) {
  return value.kind == CellKind::kEmpty ||
         (value.kind == CellKind::kText && TrimBlanks(value.text).empty());
}

}  // namespace

DataSheet::DataSheet(Workbook& workbook, clsStructure& structure)
    : workbook_(workbook), sheet_(GetDataSheet(workbook)), structure_(structure) {}

// Columns are looked up by their names here, once a sheet; rows are read by their numbers.
void DataSheet::ReadLayout(int output_columns) {
  header_row_ = GetHeaderRow(workbook_);
  replication_ = GetReplicationNum();
  FindColumns(output_columns);
  last_row_ = GetLastRow(sheet_);
}

void DataSheet::FindColumns(int output_columns) {
  for (const std::string& name : structure_.KeyColsArray()) {
    key_columns_.push_back({name + "=", FindColumn(name)});
  }
  for (const std::string& name : structure_.OutputColsArray()) {
    const int position = structure_.OutputColPosition(name);
    // Behind the output columns stand the replications: the value would land among the data.
    if (position > output_columns) {
      throw Error(error_number::kAutomation,
                  "The output was begun without a column for \"" + name +
                      "\": the sample file could not be read, or the settings have changed since.");
    }
    output_columns_.push_back({position, FindColumn(name)});
  }
  // Checked for a sheet without rows, too: a text below the data is taken for the header row, and
  // all rows above it would be left out without a word.
  data_column_ = structure_.AvailableColPosition(structure_.DataColumn());
  if (data_column_ < 1) {
    throw Error(error_number::kAutomation,
                "The sheet \"" + sheet_.Name() + "\" of " + workbook_.Name() +
                    " has no data column \"" + structure_.DataColumn() + "\" in row " +
                    std::to_string(header_row_) +
                    ", which counts as the header row: it is the lowest whose first cell is no " +
                    "number.");
  }
}

// The sheet's own columns come first; a sheet may not name one like those that the file supplies.
ColumnSource DataSheet::FindColumn(const std::string& name) {
  using Kind = ColumnSource::Kind;
  const int sheet_column = structure_.AvailableColPosition(name);
  if (sheet_column > 0) return {Kind::kSheetColumn, sheet_column};
  if (EqualText(name, kDateColumn)) return {Kind::kDate};
  if (EqualText(name, kFilenameColumn)) return {Kind::kFilename};
  if (EqualText(name, kDayNumColumn)) return {Kind::kDayNum};
  return {Kind::kNothing};
}

// The last row is asked for, since a sheet that is full has no blank below its data.
bool DataSheet::HasRow(int row) const {
  return row <= last_row_ && !IsBlank(sheet_.Value(row, 1));
}

void DataSheet::BuildKey(int row, std::string& key) {
  key.clear();
  for (const KeyColumn& column : key_columns_) {
    key += column.label;
    AppendCellText(GetColumnValue(column.source, row), key);
    key += ';';
  }
}

CellValue DataSheet::GetColumnValue(const ColumnSource& source, int row) {
  using Kind = ColumnSource::Kind;
  switch (source.kind) {
    case Kind::kSheetColumn:
      return sheet_.Value(row, source.sheet_column);
    case Kind::kDate:
      if (!date_) date_ = GetDate();
      return CellValue::Text(*date_);
    case Kind::kFilename:
      if (!filename_) filename_ = FullName();
      return CellValue::Text(*filename_);
    case Kind::kDayNum:
      if (!day_num_) day_num_ = std::to_string(GetDayNum());
      return CellValue::Text(*day_num_);
    case Kind::kNothing:
      break;
  }
  return CellValue::Text("");
}

// The first cell holds date and time, "12/03/2002 10:15".
std::string DataSheet::GetDate() const {
  const std::string text = CellText(sheet_.Value(1, 1));
  const std::size_t blank = text.find(' ');
  if (blank == std::string::npos) {
    TellAndFail(std::string("Problem occurred while trying to extract the date from Column ") +
                "\"A1\".Please make sure date format is as required." + kLineBreak + kLineBreak +
                "Filename: " + DisplayPath());
  }
  return text.substr(0, blank);
}

std::int16_t DataSheet::GetDayNum() const {
  const std::vector<std::string> fields = FileNameFields(workbook_.Name());
  if (fields.size() < 2) throw Error(error_number::kSubscript);
  return ToInt16(fields[fields.size() - 2]);
}

std::int16_t DataSheet::GetReplicationNum() const {
  const std::int16_t number = ReplicationOf(workbook_.Name());
  if (number > 0) return number;
  TellAndFail(std::string("Could not extract replication number from file. ") +
              "Please make sure filenames are in format \"<XXX>-<X>-<REPLICATION-NUM>.xls\"." +
              kLineBreak + kLineBreak + "Filename: " + DisplayPath());
}

// Replications count from 1. The column of a lower number would be one of the output columns, whose
// values the data would overwrite.
std::int16_t DataSheet::ReplicationOf(const std::string& workbook_name) {
  try {
    const std::vector<std::string> fields = FileNameFields(workbook_name);
    const std::int16_t number = ToInt16(fields.empty() ? std::string() : fields.back());
    return std::max(number, std::int16_t{0});
  } catch (const Error&) {
    return 0;
  }
}

std::string DataSheet::FullName() const {
  return workbook_.Path() + Platform().files->Separator() + workbook_.Name();
}

std::string DataSheet::DisplayPath() const {
  return GetDisplayPath(FullName());
}

}  // namespace korvex
