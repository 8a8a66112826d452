// Reading a data sheet: its rows, their keys and the values of their columns.

#include <algorithm>
#include <utility>

#include "engine/clsKorvex.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "structure/basFuncs_workbooks.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

constexpr char kLineBreak[] = "\r\n";

// The fields of "<XXX>-<X>-<REPLICATION-NUM>.xls".
std::vector<std::string> FileNameFields(const std::string& workbook_name) {
  return Split(SharedFileSys().DropExtention(workbook_name), "-");
}

bool IsBlank(const CellValue& value) {
  return value.kind == CellKind::kEmpty ||
         (value.kind == CellKind::kText && TrimBlanks(value.text).empty());
}

}  // namespace

void clsKorvex::ProcessSheet(const std::string& base_name, std::int16_t file_number,
                             std::int16_t file_count) {
  events_.Message("Folder " + std::to_string(current_folder_) + " of " +
                  std::to_string(folder_count_) + ", Filename " + Shown(base_name) + " (" +
                  std::to_string(file_number) + " of " + std::to_string(file_count) + ")" +
                  ", Sheet " + std::to_string(data_sheet_->Index()) + " of " +
                  std::to_string(input_workbook_->WorksheetCount()));
  ++sheet_number_;
  date_.reset();
  filename_.reset();
  day_num_.reset();
  const int header_row = GetHeaderRow(*input_workbook_);
  replication_ = GetReplicationNum();
  replication_column_ = 0;
  const SheetColumns columns = FindSheetColumns(header_row);

  // A blank ends the data; a sheet that is full to its last row has none below.
  const int last_row = GetLastRow(*data_sheet_);
  for (int row = header_row + 1; row <= last_row; ++row) {
    if (IsBlank(data_sheet_->Value(row, 1))) break;
    BuildKey(row, columns, key_);
    bool is_new = false;
    const KeyRow key_row = CheckKey(key_, is_new);
    WriteData(key_, key_row.row, row, columns.data_column);
    if (!is_new) continue;
    WriteOutputColumns(key_row.row, row, columns);
    ++next_output_row_;
  }
}

clsKorvex::SheetColumns clsKorvex::FindSheetColumns(int header_row) {
  SheetColumns columns;
  for (const std::string& name : structure_.KeyColsArray()) {
    columns.keys.push_back({name + "=", FindColumn(name)});
  }
  for (const std::string& name : structure_.OutputColsArray()) {
    const int position = structure_.OutputColPosition(name);
    if (position > output_columns_) {
      throw Error(error_number::kAutomation,
                  "The output was begun without a column for \"" + name +
                      "\": the sample file could not be read, or the settings have changed since.");
    }
    columns.outputs.push_back({position, FindColumn(name)});
  }
  // Also of a sheet without rows: a text below the data passes for the header row, and would leave
  // the sheet unread.
  columns.data_column = structure_.AvailableColPosition(structure_.DataColumn());
  if (columns.data_column < 1) {
    throw Error(error_number::kAutomation,
                "The sheet \"" + data_sheet_->Name() + "\" of " + input_workbook_->Name() +
                    " has no data column \"" + structure_.DataColumn() + "\" in row " +
                    std::to_string(header_row) +
                    ", which counts as the header row: it is the lowest whose first cell is no " +
                    "number.");
  }
  return columns;
}

clsKorvex::ColumnSource clsKorvex::FindColumn(const std::string& name) {
  using Kind = ColumnSource::Kind;
  const int sheet_column = structure_.AvailableColPosition(name);
  if (sheet_column > 0) return {Kind::kSheetColumn, sheet_column};
  if (EqualText(name, kDateColumn)) return {Kind::kDate};
  if (EqualText(name, kFilenameColumn)) return {Kind::kFilename};
  if (EqualText(name, kDayNumColumn)) return {Kind::kDayNum};
  return {Kind::kNothing};
}

void clsKorvex::BuildKey(int row, const SheetColumns& columns, std::string& key) {
  key.clear();
  for (const KeyColumn& column : columns.keys) {
    key += column.label;
    AppendCellText(GetColumnValue(column.source, row), key);
    key += ';';
  }
}

CellValue clsKorvex::GetColumnValue(const ColumnSource& source, int row) {
  using Kind = ColumnSource::Kind;
  switch (source.kind) {
    case Kind::kSheetColumn:
      return data_sheet_->Value(row, source.sheet_column);
    case Kind::kDate:
      if (!date_) date_ = GetDate();
      return CellValue::Text(*date_);
    case Kind::kFilename:
      if (!filename_) filename_ = InputFullName();
      return CellValue::Text(*filename_);
    case Kind::kDayNum:
      if (!day_num_) day_num_ = std::to_string(GetDayNum());
      return CellValue::Text(*day_num_);
    case Kind::kNothing:
      break;
  }
  return CellValue::Text("");
}

std::string clsKorvex::GetDate() const {
  const std::string text = CellText(data_sheet_->Value(1, 1));
  const std::size_t blank = text.find(' ');
  if (blank == std::string::npos) {
    Refuse(std::string("Problem occurred while trying to extract the date from Column \"A1\".") +
           "Please make sure date format is as required." + kLineBreak + kLineBreak +
           "Filename: " + InputDisplayPath());
  }
  return text.substr(0, blank);
}

std::int16_t clsKorvex::GetDayNum() const {
  const std::vector<std::string> fields = FileNameFields(input_workbook_->Name());
  if (fields.size() < 2) throw Error(error_number::kSubscript);
  return ToInt16(fields[fields.size() - 2]);
}

// Replications count from 1: a lower number would lie in the columns of the output columns and one
// value would overwrite the other. 0 for a name without such a number.
std::int16_t clsKorvex::ReplicationOf(const std::string& workbook_name) {
  try {
    const std::vector<std::string> fields = FileNameFields(workbook_name);
    const std::int16_t number = ToInt16(fields.empty() ? std::string() : fields.back());
    return std::max(number, std::int16_t{0});
  } catch (const Error&) {
    return 0;
  }
}

std::int16_t clsKorvex::GetReplicationNum() const {
  const std::int16_t number = ReplicationOf(input_workbook_->Name());
  if (number > 0) return number;
  Refuse(std::string("Could not extract replication number from file. ") +
         "Please make sure filenames are in format \"<XXX>-<X>-<REPLICATION-NUM>.xls\"." +
         kLineBreak + kLineBreak + "Filename: " + InputDisplayPath());
}

std::string clsKorvex::InputFullName() const {
  return input_workbook_->Path() + Platform().files->Separator() + input_workbook_->Name();
}

std::string clsKorvex::InputDisplayPath() const {
  return GetDisplayPath(InputFullName());
}

}  // namespace korvex
