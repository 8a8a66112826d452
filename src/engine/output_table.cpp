#include "engine/output_table.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "files/basGeneral.h"
#include "platform/error.h"
#include "platform/shown_text.h"
#include "text/code_page.h"
#include "text/text.h"
#include "workbook/cell_text.h"
#include "workbook/sheet_rules.h"

namespace korvex {
namespace {

// So many empty columns in a row mean that the headers have ended.
constexpr int kEmptyColumnsAtEnd = 6;

constexpr std::array<std::array<const char*, 2>, 4> kRenamedHeaders = {{
    {"cell plate #", "plate_96"},
    {"cell plate wells ##", "well_96"},
    {"compound ID", "chem_id"},
    {"compound #", "chem_num"},
}};

constexpr std::array<const char*, 6> kExtraHeaders = {"screen_num", "row_num",  "vic_num",
                                                      "plate_384",  "well_384", "plate_id"};

std::string HeaderOf(const std::string& column) {
  for (const auto& [name, header] : kRenamedHeaders) {
    if (EqualText(column, name)) return header;
  }
  return column;
}

// Letters are bytes of code page 1252.
constexpr int kLastReplication = 255 - 64;
constexpr int kFirstSharing = 'a' - 64;  // its letter is another's in lower case

// The character whose code is 64 + the replication number: "A" for 1, "B" for 2.
std::string ReplicationLetter(std::int16_t replication) {
  if (replication < 1 || replication > kLastReplication) throw Error(error_number::kInvalidCall);
  return Utf8FromCodePage1252(static_cast<unsigned char>(64 + replication));
}

// What a cell holds after the text of `value` was written into it. A number becomes the number that
// its text reads as, which has at most 15 digits. `text` is scratch storage, which the result may
// refer to.
CellValue WrittenAsText(const CellValue& value, std::string& text) {
  if (value.kind == CellKind::kEmpty) return value;
  if (value.kind == CellKind::kText) {
    return value.text.empty() ? CellValue() : CellFromText(value.text);
  }
  // A whole number reads back from its text as it was.
  if (value.kind == CellKind::kNumber && std::abs(value.number) < 1e15 &&
      value.number == std::trunc(value.number)) {
    return CellValue::Number(value.number + 0.0);
  }
  text.clear();
  AppendCellText(value, text);
  if (value.kind == CellKind::kNumber) {
    return CellValue::Number(ParseNumber(text).value_or(value.number));
  }
  return CellFromText(text);
}

// How many columns the replications of those workbooks will get, and the highest replication that
// gives one its place. A number without a letter is passed over: its file is refused when it is
// read.
struct Replications {
  int count = 0;
  std::int16_t highest = 0;
};

Replications ReplicationsOf(const std::vector<std::string>& workbook_names) {
  Replications found;
  NameIndex letters;
  for (const std::string& name : workbook_names) {
    const std::int16_t replication = DataSheet::ReplicationOf(name);
    if (replication < 1 || replication > kLastReplication) continue;
    if (!letters.FindOrAdd(ReplicationLetter(replication)).second) continue;
    ++found.count;
    found.highest = std::max(found.highest, replication);
  }
  return found;
}

}  // namespace

void OutputTable::WriteHeaders() {
  for (const std::string& name : structure_.OutputColsArray()) {
    sheet_.SetValue(1, ++column_count_, CellFromText(HeaderOf(name)));
  }
}

void OutputTable::BeginSheet() {
  ++sheet_number_;
  replication_column_ = 0;
}

// One table serves both checks: a key's row, and the last data sheet that the key was met in.
OutputTable::KeyPlace OutputTable::CheckKey(const std::string& key, const DataSheet& sheet) {
  KeyRow& known = key_table_.Item(key);
  if (known.last_sheet == sheet_number_) {
    TellAndFail(std::string("Duplicate key in file ") + kLineBreak + "'" + sheet.DisplayPath() +
                "'" + kLineBreak + kLineBreak + "Key name:   " + Shown(key));
  }
  known.last_sheet = sheet_number_;
  const bool is_new = known.row == 0;
  if (is_new) known.row = next_row_;
  return {known.row, is_new};
}

void OutputTable::WriteData(const std::string& key, int output_row, const DataSheet& sheet,
                            int row) {
  if (replication_column_ == 0) replication_column_ = ReplicationColumn(sheet);
  const int column = replication_column_;
  const CellValue present = sheet_.Value(output_row, column);
  if (present.kind != CellKind::kEmpty && !TrimBlanks(CellText(present)).empty()) {
    TellAndFail(std::string("The same key, with the same replication number was found in ") +
                "different files, and data would be overwritten. Please check that all key " +
                "fields are truely unique." + kLineBreak + kLineBreak +
                "Current file: " + sheet.DisplayPath() + kLineBreak + kLineBreak +
                "Key name:   " + Shown(key) + SharedLetter(sheet.Replication()));
  }
  sheet_.SetValue(output_row, column, sheet.MeasuredValue(row));
}

// A replication keeps the column that it was given when it was first met, even after columns have
// been deleted or headers appended. Data in a column that has lost its header are refused, since
// the column would be deleted at the end of the batch.
int OutputTable::ReplicationColumn(const DataSheet& sheet) {
  const std::int16_t replication = sheet.Replication();
  const std::string letter = ReplicationLetter(replication);
  auto& [column, replications] = replication_table_.Item(letter);
  replications.insert(replication);
  if (column == 0) {
    column = column_count_ + replication;
    sheet_.SetValue(1, column, CellValue::Text(letter));
  } else if (HeaderIsEmpty(column)) {
    TellAndFail(
        "The data of replication " + std::to_string(replication) +
        " would be lost: its column moved when the empty columns of an earlier sub-folder were " +
        "removed. Number the replications without gaps, or process all files as selected files." +
        kLineBreak + kLineBreak + "Current file: " + sheet.DisplayPath());
  }
  return column;
}

// Explains why a cell can be taken although no other file has the replication number: letters are
// compared without their case, so that 33 ("a") goes to the column of 1 ("A").
std::string OutputTable::SharedLetter(std::int16_t replication) {
  const std::set<std::int16_t>& sharing =
      replication_table_.Item(ReplicationLetter(replication)).replications;
  if (sharing.size() < 2) return {};
  std::vector<std::string> numbers;
  for (const std::int16_t number : sharing) numbers.push_back(std::to_string(number));
  const std::string last = numbers.back();
  numbers.pop_back();
  return std::string(kLineBreak) + kLineBreak + "Replications " + Join(numbers, ", ") + " and " +
         last + " share one column: their letters differ in case alone. Give the files numbers " +
         "below " + std::to_string(kFirstSharing) + ".";
}

void OutputTable::WriteOutputColumns(int output_row, DataSheet& sheet, int row) {
  for (const OutputColumn& column : sheet.OutputColumns()) {
    const CellValue value = sheet.GetColumnValue(column.source, row);
    sheet_.SetValue(output_row, column.position, WrittenAsText(value, written_text_));
  }
  ++next_row_;
}

bool OutputTable::HeaderIsEmpty(int column) const {
  return TrimBlanks(CellText(sheet_.Value(1, column))).empty();
}

void OutputTable::RemoveEmptyColumns() {
  int deleted_in_a_row = 0;
  for (int column = 1; column <= kLastHeaderColumn && deleted_in_a_row < kEmptyColumnsAtEnd;) {
    if (HeaderIsEmpty(column)) {
      sheet_.DeleteColumn(column);  // the next column takes its number
      ++deleted_in_a_row;
    } else {
      deleted_in_a_row = 0;
      ++column;
    }
  }
}

void OutputTable::AddExtraHeaders() {
  extra_headers_.Clear();
  for (const char* header : kExtraHeaders) extra_headers_.AddText(header);
  int column = 1;
  while (column <= kLastHeaderColumn && !HeaderIsEmpty(column)) ++column;
  if (column > kLastHeaderColumn) return;
  for (const std::string& header : extra_headers_.Texts()) {
    sheet_.SetValue(1, column++, CellValue::Text(header));
  }
}

void OutputTable::CheckReplicationsAhead(const std::vector<std::string>& workbook_names) const {
  const int highest = ReplicationsOf(workbook_names).highest;
  if (highest == 0) return;
  try {
    sheet_.CheckRoom({1, column_count_ + highest});
  } catch (const Error& error) {
    TellAndFail("There are " + std::to_string(column_count_) +
                " output columns and replications up to " + std::to_string(highest) + ". " +
                error.Description());
  }
}

// At the end of the first sub-folder its replications stand side by side.
void OutputTable::CheckFoldersAhead(const std::vector<std::string>& names_in_first_folder,
                                    int folder_count) const {
  CheckColumnsAhead(column_count_ + ReplicationsOf(names_in_first_folder).count, folder_count,
                    folder_count);
}

void OutputTable::CheckFoldersAhead(int folders_done, int folder_count) const {
  CheckColumnsAhead(sheet_.LastCell().column, folder_count - folders_done, folder_count);
}

// Every sub-folder to come appends its headers to the `columns` that there are. Headers begin in
// the last header column at the latest, and may reach beyond it.
void OutputTable::CheckColumnsAhead(int columns, int folders_to_come, int folder_count) const {
  const int headers = static_cast<int>(kExtraHeaders.size());
  const int last = std::min(columns + folders_to_come * headers, kLastHeaderColumn + headers - 1);
  try {
    sheet_.CheckRoom({1, std::max({1, columns, last})});
  } catch (const Error& error) {
    TellAndFail("Every sub-folder adds " + std::to_string(headers) +
                " columns to the output, and there are " + std::to_string(folder_count) +
                " sub-folders. " + error.Description());
  }
}

}  // namespace korvex
