// Filling the output sheet: a row per key, a column per replication, and the headers.

#include <algorithm>
#include <array>
#include <cmath>

#include "engine/clsKorvex.h"
#include "platform/error.h"
#include "platform/shown_text.h"
#include "structure/keyed_collection.h"
#include "text/code_page.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

constexpr char kLineBreak[] = "\r\n";
constexpr int kLastHeaderColumn = 387;
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

constexpr int kLastReplication = 255 - 64;
constexpr int kFirstSharing = 'a' - 64;  // the first whose letter another has in upper case

// The character whose code is 64 + the replication number: "A" for 1, "B" for 2.
std::string ReplicationLetter(std::int16_t replication) {
  if (replication < 1 || replication > kLastReplication) throw Error(error_number::kInvalidCall);
  return Utf8FromCodePage1252(static_cast<unsigned char>(64 + replication));
}

// What a cell holds once the text of `value` is written into it. A number stays the number that its
// text reads as, whatever notation that takes. `text` lends the room.
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

}  // namespace

void clsKorvex::WriteHeaders() {
  for (const std::string& name : structure_.OutputColsArray()) {
    output_sheet_->SetValue(1, ++output_columns_, CellFromText(HeaderOf(name)));
  }
}

// One table serves both checks: a key's row, and the last data sheet that the key was met in.
clsKorvex::KeyRow& clsKorvex::CheckKey(const std::string& key, bool& is_new) {
  KeyRow& found = key_table_.Item(key);
  is_new = found.row == 0;
  if (found.last_sheet == sheet_number_) {
    Refuse(std::string("Duplicate key in file ") + kLineBreak + "'" + InputDisplayPath() + "'" +
           kLineBreak + kLineBreak + "Key name:   " + Shown(key));
  }
  found.last_sheet = sheet_number_;
  if (is_new) found.row = next_output_row_;
  return found;
}

void clsKorvex::WriteData(const std::string& key, int output_row, int row, int data_column) {
  if (replication_column_ == 0) replication_column_ = ReplicationColumn(replication_);
  const int column = replication_column_;
  const CellValue present = output_sheet_->Value(output_row, column);
  if (present.kind != CellKind::kEmpty && !TrimBlanks(CellText(present)).empty()) {
    Refuse(std::string("The same key, with the same replication number was found in different ") +
           "files, and data would be overwritten. Please check that all key fields are " +
           "truely unique." + kLineBreak + kLineBreak + "Current file: " + InputDisplayPath() +
           kLineBreak + kLineBreak + "Key name:   " + Shown(key) + SharedColumn());
  }
  output_sheet_->SetValue(output_row, column, data_sheet_->Value(row, data_column));
}

// A replication keeps the column that it was given when it was first met, even after columns have
// been deleted or headers appended. What is written below no header would be deleted with its
// column.
int clsKorvex::ReplicationColumn(std::int16_t replication) {
  const std::string letter = ReplicationLetter(replication);
  auto& [column, replications] = replication_table_.Item(letter);
  replications.insert(replication);
  if (column == 0) {
    column = output_columns_ + replication;
    output_sheet_->SetValue(1, column, CellValue::Text(letter));
  } else if (HeaderIsEmpty(column)) {
    Refuse(
        "The data of replication " + std::to_string(replication) +
        " would be lost: its column moved when the empty columns of an earlier sub-folder were " +
        "removed. Number the replications without gaps, or process all files as selected files." +
        kLineBreak + kLineBreak + "Current file: " + InputDisplayPath());
  }
  return column;
}

// Why a cell can be taken although no other file has the replication number: letters count without
// their case, so that 33 ("a") goes to the column of 1 ("A").
std::string clsKorvex::SharedColumn() {
  const std::set<std::int16_t>& replications =
      replication_table_.Item(ReplicationLetter(replication_)).replications;
  if (replications.size() < 2) return {};
  std::vector<std::string> numbers;
  for (const std::int16_t number : replications) numbers.push_back(std::to_string(number));
  const std::string last = numbers.back();
  numbers.pop_back();
  return std::string(kLineBreak) + kLineBreak + "Replications " + Join(numbers, ", ") + " and " +
         last + " share one column: their letters differ in case alone. Give the files numbers " +
         "below " + std::to_string(kFirstSharing) + ".";
}

void clsKorvex::WriteOutputColumns(int output_row, int row, const SheetColumns& columns) {
  for (const OutputColumn& column : columns.outputs) {
    const CellValue value = GetColumnValue(column.source, row);
    output_sheet_->SetValue(output_row, column.position, WrittenAsText(value, written_text_));
  }
}

bool clsKorvex::HeaderIsEmpty(int column) const {
  return TrimBlanks(CellText(output_sheet_->Value(1, column))).empty();
}

void clsKorvex::RemoveEmptyColumns() {
  int deleted_in_a_row = 0;
  for (int column = 1; column <= kLastHeaderColumn && deleted_in_a_row < kEmptyColumnsAtEnd;) {
    if (HeaderIsEmpty(column)) {
      output_sheet_->DeleteColumn(column);
      ++deleted_in_a_row;
    } else {
      deleted_in_a_row = 0;
      ++column;
    }
  }
}

void clsKorvex::AddExtraHeaders() {
  extra_headers_.Clear();
  for (const char* header : kExtraHeaders) extra_headers_.AddText(header);
  int column = 1;
  while (column <= kLastHeaderColumn && !HeaderIsEmpty(column)) ++column;
  if (column > kLastHeaderColumn) return;
  for (const std::string& header : extra_headers_.Texts()) {
    output_sheet_->SetValue(1, column++, CellValue::Text(header));
  }
}

// The folders to come will add their headers to the `columns` that there are: what will not fit
// then is told now, not at the end of a long run.
void clsKorvex::CheckColumnsAhead(int columns) const {
  const int folders = folder_count_ - current_folder_;
  const int headers = static_cast<int>(kExtraHeaders.size());
  // Headers are put into the first empty column up to the last one, and behind it.
  const int last = std::min(columns + folders * headers, kLastHeaderColumn + headers - 1);
  try {
    output_sheet_->CheckRoom({1, std::max({1, columns, last})});
  } catch (const Error& error) {
    Refuse("Every sub-folder adds " + std::to_string(headers) +
           " columns to the output, and there are " + std::to_string(folder_count_) +
           " sub-folders. " + error.Description());
  }
}

// Names, in the order in which their files will be read, tell the replications and thereby the
// columns that will be given out. A replication that has no letter is refused when its file is
// read.
clsKorvex::Replications clsKorvex::ReplicationsOf(const std::vector<std::string>& workbook_names) {
  Replications found;
  NameIndex letters;
  for (const std::string& name : workbook_names) {
    const std::int16_t replication = ReplicationOf(name);
    if (replication < 1 || replication > kLastReplication) continue;
    if (!letters.FindOrAdd(ReplicationLetter(replication)).second) continue;
    ++found.count;
    found.highest = std::max(found.highest, replication);
  }
  return found;
}

void clsKorvex::CheckReplicationsAhead(const std::vector<std::string>& workbook_names) const {
  const int highest = ReplicationsOf(workbook_names).highest;
  if (highest == 0) return;
  try {
    output_sheet_->CheckRoom({1, output_columns_ + highest});
  } catch (const Error& error) {
    Refuse("There are " + std::to_string(output_columns_) +
           " output columns and replications up to " + std::to_string(highest) + ". " +
           error.Description());
  }
}

}  // namespace korvex
