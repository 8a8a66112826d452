#include "engine/data_sheet.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

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

// "0,110", "-3,5": sign, digits, one comma, digits, and nothing else.
std::optional<double> DecimalCommaNumber(std::string_view text) {
  const std::size_t start = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  const std::size_t comma = text.find(',', start);
  if (comma == std::string_view::npos || comma == start || comma + 1 == text.size()) return {};
  // The conversion knows a minus but no plus, and takes exponents and "inf", which the digits rule
  // out.
  std::string number(text.substr(start == 1 && text[0] == '+' ? 1 : 0));
  std::ranges::replace(number, ',', '.');
  const std::string_view digits = text.substr(start);
  const std::size_t end = comma - start;
  if (!std::ranges::all_of(digits.substr(0, end), IsAsciiDigit) ||
      !std::ranges::all_of(digits.substr(end + 1), IsAsciiDigit)) {
    return {};
  }
  double value = 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
  if (read.ec != std::errc()) return {};
  return value;
}

}  // namespace

bool IsBlank(const CellValue& value) {
  return value.kind == CellKind::kEmpty ||
         (value.kind == CellKind::kText && TrimBlanks(value.text).empty());
}

DataSheet::DataSheet(Workbook& workbook, clsStructure& structure, bool decimal_comma)
    : workbook_(workbook),
      sheet_(GetDataSheet(workbook)),
      structure_(structure),
      decimal_comma_(decimal_comma) {}

// Columns are looked up by their names here, once a sheet; rows are read by their numbers.
void DataSheet::ReadLayout(int output_columns) {
  header_row_ = structure_.HeaderRow();
  replication_ = GetReplicationNum();
  FindColumns(output_columns);
  last_row_ = GetLastRow(sheet_);
}

void DataSheet::FindColumns(int output_columns) {
  // The first column decides where the data end, whatever columns the run asks for; it gets index
  // 0.
  ReadAlways(1);
  for (const std::string& name : structure_.KeyColsArray()) {
    key_columns_.push_back({name + "=", SourceOf(name)});
  }
  for (const std::string& name : structure_.OutputColsArray()) {
    const int position = structure_.OutputColPosition(name);
    // Behind the output columns stand the replications: the value would land among the data.
    if (position > output_columns) {
      throw Error(error_number::kAutomation,
                  "The output was begun without a column for \"" + name +
                      "\": the sample file could not be read, or the settings have changed since.");
    }
    output_columns_.push_back({position, SourceOf(name)});
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
  data_index_ = ReadAlways(data_column_);
}

// The sheet's own columns come first; a sheet may not name one like those that the file supplies.
ColumnSource DataSheet::SourceOf(const std::string& name) {
  using Kind = ColumnSource::Kind;
  // A look-up of a name that is not there would leave it behind among the available ones.
  if (!structure_.HasAvailableCol(name)) return {};
  const int sheet_column = structure_.AvailableColPosition(name);
  if (sheet_column > 0) return {Kind::kSheetColumn, sheet_column, ReadAlways(sheet_column)};
  if (EqualText(name, kDateColumn)) return {Kind::kDate};
  if (EqualText(name, kFilenameColumn)) return {Kind::kFilename};
  if (EqualText(name, kDayNumColumn)) return {Kind::kDayNum};
  return {Kind::kNothing};
}

std::size_t DataSheet::ReadAlways(int sheet_column) {
  // Columns may serve as key and output at once: each is read once a row.
  const auto known = std::ranges::find(read_columns_, sheet_column);
  const auto index = static_cast<std::size_t>(known - read_columns_.begin());
  if (known == read_columns_.end()) read_columns_.push_back(sheet_column);
  return index;
}

// The last row is asked for, since a sheet that is full has no blank below its data.
bool DataSheet::HasRow(int row) {
  if (row > last_row_) return false;
  row_values_.resize(read_columns_.size());
  current_row_ = row;
  // All cells of a row at once, which takes less than looking up each by itself.
  has_row_values_ = sheet_.ReadRow(row, read_columns_, row_values_);
  return !IsBlank(ValueOf(row, 1, 0));
}

void DataSheet::BuildKey(int row, std::string& key) {
  key.clear();
  const bool is_read = row == current_row_ && has_row_values_;
  for (KeyColumn& column : key_columns_) {
    key += column.label;
    // Most key columns are sheet columns: their text goes straight into the key, with no copy
    // between. A million rows pass here.
    const bool is_sheet_column = column.source.kind == ColumnSource::Kind::kSheetColumn;
    const CellValue value = is_read && is_sheet_column ? row_values_[column.source.index]
                                                       : GetColumnValue(column.source, row);
    if (value.kind == CellKind::kNumber) {
      AppendNumberText(value.number, column, key);
    } else {
      AppendCellText(value, key);
    }
    key += ';';
  }
}

void DataSheet::AppendNumberText(double number, KeyColumn& column, std::string& key) {
  if (column.number != number) {
    column.number = number;
    column.number_text = CellText(CellValue::Number(number));
  }
  key += column.number_text;
}

CellValue DataSheet::GetColumnValue(const ColumnSource& source, int row) {
  using Kind = ColumnSource::Kind;
  switch (source.kind) {
    case Kind::kSheetColumn:
      return ValueOf(row, source.sheet_column, source.index);
    case Kind::kDate:
      // Kept for the sheet, since a cell value only refers to its text.
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

CellValue DataSheet::MeasuredValue(int row) const {
  const CellValue value = ValueOf(row, data_column_, data_index_);
  if (decimal_comma_ && value.kind == CellKind::kText) {
    if (const auto number = DecimalCommaNumber(value.text)) return CellValue::Number(*number);
  }
  return value;
}

// The first cell holds date and time, "12/03/2002 10:15".
std::string DataSheet::DateOrNothing() const {
  const std::string text = CellText(sheet_.Value(1, 1));
  const std::size_t blank = text.find(' ');
  return blank == std::string::npos ? std::string() : text.substr(0, blank);
}

std::string DataSheet::DayField() const {
  const std::vector<std::string> fields = FileNameFields(workbook_.Name());
  return fields.size() < 2 ? std::string() : fields[fields.size() - 2];
}

std::string DataSheet::ReplicationField() const {
  const std::vector<std::string> fields = FileNameFields(workbook_.Name());
  return fields.empty() ? std::string() : fields.back();
}

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

std::optional<std::int16_t> DataSheet::Day() const {
  try {
    return GetDayNum();
  } catch (const Error&) {
    return std::nullopt;
  }
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
