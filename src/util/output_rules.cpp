#include "util/output_rules.h"

#include <cmath>
#include <cstddef>

#include "platform/error.h"
#include "platform/file_system.h"
#include "util/text.h"
#include "util/utf8.h"

namespace korvex {
namespace {

constexpr int kMaxRows = 65536;
constexpr int kMaxColumns = 256;
constexpr std::size_t kMaxCellCharacters = 32767;
constexpr std::size_t kMaxSheetNameCharacters = 31;

constexpr const char* kOtherFormats[] = {".xlsx", ".xlsm", ".xlsb", ".xltx", ".ods", ".csv",
                                         ".tsv",  ".txt",  ".htm",  ".html", ".xml", ".pdf"};

[[noreturn]] void Refuse(const std::string& cause) {
  throw Error(error_number::kAutomation, cause);
}

void CheckLimits(int row, int column) {
  if (row > kMaxRows) {
    Refuse("The .xls format holds at most 65,536 rows a sheet; row " +
           GroupedDigits(static_cast<std::uint64_t>(row)) +
           " does not fit. Split the campaign into parts with fewer keys each and convert them "
           "one by one.");
  }
  if (column > kMaxColumns) {
    Refuse("The .xls format holds at most 256 columns a sheet; column " + std::to_string(column) +
           " does not fit. Choose fewer output columns or convert fewer replications at a time.");
  }
}

}  // namespace

void CheckOutputEnding(std::string_view file_name) {
  const std::size_t dot = file_name.rfind('.');
  if (dot == std::string_view::npos) return;
  const std::string ending(file_name.substr(dot));
  for (const char* format : kOtherFormats) {
    if (!EqualText(ending, format)) continue;
    Refuse("Only .xls workbooks can be written, but the output file " + std::string(file_name) +
           " is named like " + format + ". Choose a name that ends with .xls.");
  }
}

void CheckOutputTarget(const FileSystem& files, const std::string& target,
                       const std::vector<std::string>& inputs) {
  CheckOutputEnding(target);
  if (!files.FileExists(target)) return;
  for (const std::string& input : inputs) {
    if (!files.IsSameFile(input, target)) continue;
    Refuse("It was read as input, and would be lost. Choose another file.");
  }
}

std::string SheetNameRefusal(std::string_view name) {
  return "A worksheet cannot be named \"" + std::string(name) + "\": ";
}

void CheckSheetName(std::string_view name) {
  if (name.empty()) Refuse(SheetNameRefusal(name) + "the name must not be empty.");
  const std::size_t length = Utf16Length(name);
  if (length > kMaxSheetNameCharacters) {
    Refuse(SheetNameRefusal(name) + "it has " + std::to_string(length) +
           " characters, and the name of a sheet at most 31.");
  }
  if (name.find_first_of("\\/?*[]:") != std::string_view::npos) {
    Refuse(SheetNameRefusal(name) + R"(the name of a sheet cannot hold any of \ / ? * [ ] :)");
  }
}

void CheckCellPosition(int row, int column) {
  if (row < 1 || column < 1) {
    Refuse("There is no cell in row " + std::to_string(row) + ", column " + std::to_string(column) +
           ": rows and columns count from 1.");
  }
}

void CheckOutputCell(const std::string& sheet, int row, int column, const CellValue& value) {
  CheckCellPosition(row, column);
  CheckLimits(row, column);
  const auto refuse = [&](const std::string& cause) {
    Refuse("Cell " + ColumnLetters(column) + std::to_string(row) + " of sheet \"" + sheet +
           "\" cannot hold " + cause);
  };
  if (value.kind == CellKind::kText) {
    // No text has more UTF-16 units than bytes.
    if (value.text.size() > kMaxCellCharacters && Utf16Length(value.text) > kMaxCellCharacters) {
      refuse("its text of " + GroupedDigits(Utf16Length(value.text)) +
             " characters: the .xls format holds at most 32,767 a cell. Shorten it in the input.");
    }
  } else if (!std::isfinite(value.number)) {
    refuse("a number that is infinite or undefined.");
  } else if (value.kind == CellKind::kError && (value.number < 0 || value.number > 255)) {
    refuse("an error code outside 0 to 255.");
  }
}

std::string ColumnLetters(int column) {
  std::string letters;
  for (int rest = column; rest > 0; rest = (rest - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
  }
  return letters;
}

}  // namespace korvex
