#include "engine/output_table.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "files/basGeneral.h"
#include "platform/error.h"
#include "platform/shown_text.h"
#include "text/code_page_1252.h"
#include "text/text.h"
#include "workbook/cell_text.h"
#include "workbook/sheet_rules.h"

namespace korvex {
namespace {

// So many empty columns in a row mean that the headers have ended.
constexpr int kEmptyColumnsAtEnd = 6;

// Left the name in the inputs, right the one that the output has for it.
constexpr std::array<std::array<const char*, 2>, 4> kRenamedHeaders = {{
    {"cell plate #", "plate_96"},
    {"cell plate wells ##", "well_96"},
    {"compound ID", "chem_id"},
    {"compound #", "chem_num"},
}};

// For values that are filled in after the run; the columns below them stay empty.
constexpr std::array<const char*, 6> kExtraHeaders = {"screen_num", "row_num",  "vic_num",
                                                      "plate_384",  "well_384", "plate_id"};

// Letters are bytes of code page 1252.
constexpr int kLastReplication = 255 - 64;
constexpr int kFirstSharing = 'a' - 64;  // its letter is another's in lower case

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

std::string HeaderOf(const std::string& column) {
  for (const auto& [name, header] : kRenamedHeaders) {
    if (EqualText(column, name)) return header;
  }
  return column;
}

std::string ReplicationLetter(std::int16_t replication) {
  if (replication < 1 || replication > kLastReplication) {
    throw Error(error_number::kInvalidCall,
                "Replication " + std::to_string(replication) +
                    " has no letter, which the header of its column would be. Number the " +
                    "replications from 1 to " + std::to_string(kLastReplication) +
                    ", or take the long form, which has a row for every reading.");
  }
  return Utf8FromCodePage1252(static_cast<unsigned char>(64 + replication));
}

CellValue WrittenAsText(const CellValue& value, std::string& text) {
  if (value.kind == CellKind::kEmpty) return value;
  if (value.kind == CellKind::kText) {
    return value.text.empty() ? CellValue() : CellFromText(value.text);
  }
  // A whole number reads back from its text as it was.
  if (value.kind == CellKind::kNumber && std::abs(value.number) < 1e15 &&
      value.number == std::trunc(value.number)) {
    // Adding 0 makes 0 of a negative zero, whose text is "0".
    return CellValue::Number(value.number + 0.0);
  }
  text.clear();
  AppendCellText(value, text);
  if (value.kind == CellKind::kNumber) {
    // Through its text, which has 15 digits at most: the cell holds the number that the text says.
    return CellValue::Number(ParseNumber(text).value_or(value.number));
  }
  return CellFromText(text);
}

void OutputTable::WriteHeaders() {
  for (const std::string& name : structure_.OutputColsArray()) {
    sheet_.SetValue(1, ++column_count_, CellFromText(HeaderOf(name)));
  }
}

void OutputTable::BeginSheet(const std::string& file, int batch) {
  file_ = file;
  batch_ = batch;
  replication_column_ = 0;
  of_file_.clear();
}

bool OutputTable::WriteData(std::uint32_t key, const DataSheet& sheet, const CellValue& value) {
  if (replication_column_ == 0) {
    replication_column_ = ReplicationColumn(sheet);
    TakeDownPlace(sheet.Replication(), replication_column_);
  }
  // A blank reading leaves the place to a later file.
  const CellValue present = sheet_.Value(RowOf(key), replication_column_);
  if (present.kind != CellKind::kEmpty && !TrimBlanks(CellText(present)).empty()) return false;
  sheet_.SetValue(RowOf(key), replication_column_, value);
  return true;
}

void OutputTable::TakeDownPlace(std::int16_t replication, int column) {
  // From the last one back: those of the current batch stand at the end.
  for (auto placed = placed_.rbegin(); placed != placed_.rend() && placed->batch == batch_;
       ++placed) {
    if (placed->replication == replication && placed->column == column) return;
  }
  placed_.push_back({replication, batch_, column, file_});
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
    // By its number, not in the order of meeting: A, B and C stand side by side whichever file came
    // first. Gaps between them are deleted at the end of the batch.
    column = column_count_ + replication;
    sheet_.SetValue(1, column, CellValue::Text(letter));
  } else if (HeaderIsEmpty(column)) {
    TellAndFail(
        "The data of replication " + std::to_string(replication) +
        " would be lost: its column moved when the empty columns of an earlier sub-folder were " +
        "removed. Number the replications without gaps, or take the long form, which has a row " +
        "for every reading." + kLineBreak + kLineBreak + "Current file: " + sheet.DisplayPath());
  }
  return column;
}

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

void OutputTable::WriteOutputColumns(std::uint32_t key, DataSheet& sheet, int row) {
  const std::vector<OutputColumn>& columns = sheet.OutputColumns();
  of_file_.resize(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const ColumnSource& source = columns[i].source;
    const auto written = [&] {
      return WrittenAsText(sheet.GetColumnValue(source, row), written_text_);
    };
    if (source.kind == ColumnSource::Kind::kSheetColumn) {
      sheet_.SetValue(RowOf(key), columns[i].position, written());
    } else {
      if (!of_file_[i]) of_file_[i] = written();
      sheet_.SetValue(RowOf(key), columns[i].position, *of_file_[i]);
    }
  }
}

bool OutputTable::HeaderIsEmpty(int column) const {
  return TrimBlanks(CellText(sheet_.Value(1, column))).empty();
}

void OutputTable::RemoveEmptyColumns() {
  // So many in a row are taken for the end of the headers. Of a wider gap a part stays, and the
  // extra headers go into it.
  int deleted_in_a_row = 0;
  for (int column = 1; column <= kLastHeaderColumn && deleted_in_a_row < kEmptyColumnsAtEnd;) {
    if (HeaderIsEmpty(column)) {
      sheet_.DeleteColumn(column);  // the next column takes its number
      for (Placed& placed : placed_) {
        if (placed.column == column) placed.column = 0;
        if (placed.column > column) --placed.column;
      }
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
    // Behind a wide gap letters may follow: the headers go over them, and it is taken down whose
    // they were.
    const std::string present = CellText(sheet_.Value(1, column));
    for (Placed& placed : placed_) {
      const bool is_below =
          placed.column == column && present == ReplicationLetter(placed.replication);
      if (is_below) placed.taken_by = header;
    }
    sheet_.SetValue(1, column++, CellValue::Text(header));
  }
}

void OutputTable::NoteMisplaced(Findings& findings) const {
  for (const Placed& placed : placed_) {
    const std::string letter = ReplicationLetter(placed.replication);
    const std::string header =
        placed.column == 0 ? std::string() : CellText(sheet_.Value(1, placed.column));
    if (header == letter) continue;
    const bool is_taken = !placed.taken_by.empty() && placed.taken_by == header;
    findings.Note(
        is_taken ? FindingKind::kOverwrittenHeader : FindingKind::kMisplacedReplication, [&] {
          return FindingPlace{placed.file,
                              0,
                              {},
                              header,
                              "replication " + std::to_string(placed.replication) + " (\"" +
                                  letter + "\") stands under \"" + header + "\""};
        });
  }
}

void OutputTable::CheckReplicationsAhead(const std::vector<std::string>& workbook_names) const {
  const int highest = ReplicationsOf(workbook_names).highest;
  if (highest == 0) return;
  // A replication's number is its place behind the output columns: one file with the number 150
  // needs room for all below it, too.
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
