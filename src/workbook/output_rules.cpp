#include "workbook/output_rules.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "platform/error.h"
#include "platform/file_system.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

// Endings by which other programs would expect a format that is not written here.
constexpr const char* kOtherFormats[] = {".xlsm", ".xlsb", ".xltx", ".ods", ".txt",
                                         ".htm",  ".html", ".xml",  ".pdf"};

[[noreturn]] void Refuse(const std::string& cause) {
  throw Error(error_number::kAutomation, cause);
}

// The refusals are functions of their own, out of the way of the checks that every cell of the
// output goes through.
[[noreturn, gnu::cold, gnu::noinline]] void RefusePlace(const OutputFormat& format, int limit,
                                                        const std::string& what, int number) {
  Refuse("The " + std::string(format.ending) + " format holds at most " +
         GroupedDigits(static_cast<std::uint64_t>(limit)) + " " + what + "s a sheet; " + what +
         " " + GroupedDigits(static_cast<std::uint64_t>(number)) +
         " does not fit. Give the output a name that ends with " +
         std::string(format.larger_ending) + ".");
}

[[noreturn, gnu::cold, gnu::noinline]] void RefuseCell(const std::string& sheet, CellAddress place,
                                                       std::string_view cause) {
  Refuse("Cell " + ColumnLetters(place.column) + std::to_string(place.row) + " of sheet \"" +
         sheet + "\" cannot hold " + std::string(cause));
}

[[noreturn, gnu::cold, gnu::noinline]] void RefuseText(const OutputFormat& format,
                                                       const std::string& sheet, CellAddress place,
                                                       std::size_t characters) {
  RefuseCell(sheet, place,
             "its text of " + GroupedDigits(characters) + " characters: the " +
                 std::string(format.ending) + " format holds at most " +
                 GroupedDigits(format.characters) +
                 " a cell. Shorten it in the input, or give the output a name that ends with "
                 ".csv.");
}

}  // namespace

const OutputFormat& OutputFormatOf(std::string_view file_name) {
  const std::size_t dot = file_name.rfind('.');
  if (dot == std::string_view::npos) return kXlsFormat;
  const std::string ending(file_name.substr(dot));
  for (const OutputFormat* format : {&kXlsxFormat, &kCsvFormat, &kTsvFormat}) {
    if (EqualText(ending, format->ending)) return *format;
  }
  for (const char* format : kOtherFormats) {
    if (!EqualText(ending, format)) continue;
    Refuse("Only .xls, .xlsx, .csv and .tsv files can be written, but the output file " +
           std::string(file_name) + " is named like " + format +
           ". Choose a name that ends with .xls, .xlsx, .csv or .tsv.");
  }
  return kXlsFormat;
}

void CheckOutputTarget(const FileSystem& files, const std::string& target,
                       const std::vector<std::string>& inputs) {
  OutputFormatOf(target);
  // Compared as files and not by their names: the target may be a link to an input.
  if (!files.IsOneOf(target, inputs)) return;
  Refuse("It was read as input, and would be lost. Choose another file.");
}

// By error 58 the engine knows that it has to keep the output under another name.
Error SaveFailure(const std::string& target, const Error& cause) {
  const bool is_taken = cause.Number() == error_number::kFileExists;
  return Error(is_taken ? error_number::kFileExists : error_number::kAutomation,
               "The workbook cannot be saved as " + target + ": " + cause.Description());
}

void RefuseCellPosition(int row, int column) {
  Refuse("There is no cell in row " + std::to_string(row) + ", column " + std::to_string(column) +
         ": rows and columns count from 1.");
}

void CheckOutputPlace(const OutputFormat& format, CellAddress place) {
  CheckCellPosition(place.row, place.column);
  if (place.row > format.rows) RefusePlace(format, format.rows, "row", place.row);
  if (place.column > format.columns) RefusePlace(format, format.columns, "column", place.column);
}

void CheckOutputCell(const OutputFormat& format, const std::string& sheet, CellAddress place,
                     const CellValue& value) {
  CheckOutputPlace(format, place);
  if (value.kind == CellKind::kText) {
    // No text has more UTF-16 units than bytes.
    if (value.text.size() > format.characters && Utf16Length(value.text) > format.characters) {
      RefuseText(format, sheet, place, Utf16Length(value.text));
    }
  } else if (!std::isfinite(value.number)) {
    RefuseCell(sheet, place, "a number that is infinite or undefined.");
  } else if (value.kind == CellKind::kError && (value.number < 0 || value.number > 255)) {
    RefuseCell(sheet, place, "an error code outside 0 to 255.");
  }
}

}  // namespace korvex
