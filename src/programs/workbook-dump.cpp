// Prints the cells of a workbook, for checks against other readers.
//
//   workbook-dump FILE
//
// One line for every cell of every worksheet that is not empty, with tabs between: sheet name, row,
// column (both one-based), kind, value. Dates are serial numbers of the 1900 date system. Exit
// status 1 when the file is refused, 2 for wrong arguments.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/native_platform.h"
#include "platform/standard_streams.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/open_workbook.h"
#include "text/number_text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

constexpr std::size_t kBlock = 64 * 1024;  // of what is written at once

std::string_view KindName(CellKind kind) {
  switch (kind) {
    case CellKind::kNumber:
      return "number";
    case CellKind::kDate:
    case CellKind::kElapsed:
      return "date";
    case CellKind::kBoolean:
      return "boolean";
    case CellKind::kError:
      return "error";
    case CellKind::kText:
      return "text";
    case CellKind::kEmpty:
      break;
  }
  return "empty";
}

bool IsEscaped(char letter) {
  return letter == '\n' || letter == '\r' || letter == '\t' || letter == '\\';
}

void AppendEscaped(std::string_view text, std::string& out) {
  if (std::none_of(text.begin(), text.end(), IsEscaped)) {
    out += text;
    return;
  }
  for (const char letter : text) {
    switch (letter) {
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out += letter;
    }
  }
}

void AppendNumber(double number, std::string& out) {
  char text[kLongestNumberText];
  out.append(text, WriteNumber(number, text));
}

void AppendNumber(int number, std::string& out) {
  char text[kLongestNumberText];
  out.append(text, std::to_chars(text, text + sizeof text, number).ptr);
}

void AppendValue(const CellValue& value, std::string& out) {
  switch (value.kind) {
    case CellKind::kNumber:
    case CellKind::kDate:
    case CellKind::kElapsed:
      AppendNumber(value.number, out);
      break;
    case CellKind::kText:
      AppendEscaped(value.text, out);
      break;
    default:
      AppendCellText(value, out);
  }
}

// What the lines of all cells of a row begin with.
std::string RowStart(const std::string& sheet, int row) {
  std::string start;
  AppendEscaped(sheet, start);
  start += '\t';
  AppendNumber(row, start);
  return start += '\t';
}

void AppendCell(std::string_view row, const SheetCells::Entry& cell, std::string& out) {
  out += row;
  AppendNumber(cell.column, out);
  out += '\t';
  out += cell.is_uncalculated ? "uncalculated" : KindName(cell.value.kind);
  out += '\t';
  AppendValue(cell.value, out);
  out += '\n';
}

void Dump(const std::string& file) {
  ReadBuffers buffers;
  NamingFile(file, [&] {
    ReadWorkbookFile(*NativePlatform().Provided().files, file, buffers.file);
    const auto workbook = OpenWorkbookReader(buffers);
    std::string lines;
    for (std::size_t i = 0; i < workbook->Sheets().size(); ++i) {
      const SheetInfo& sheet = workbook->Sheets()[i];
      if (sheet.kind != SheetKind::kWorksheet) continue;
      workbook->ReadSheet(i, buffers.cells);
      int row = 0;
      std::string row_start;
      for (std::size_t n = 0; n < buffers.cells.Count(); ++n) {
        const SheetCells::Entry cell = buffers.cells.At(n);
        if (cell.row != row) row_start = RowStart(sheet.name, row = cell.row);
        AppendCell(row_start, cell, lines);
        if (lines.size() < kBlock) continue;
        WriteOutput(lines);
        lines.clear();
      }
      // Here, so that a sheet is printed in full when one behind it is refused.
      WriteOutput(lines);
      lines.clear();
    }
  });
}

}  // namespace
}  // namespace korvex

int main(int argc, char** argv) {
  korvex::OccupyStandardStreams();
  const std::vector<std::string> arguments = korvex::ProgramArguments(argc, argv);
  if (arguments.size() != 1) {
    std::fputs("usage: workbook-dump FILE\n", stderr);
    return 2;
  }
  try {
    korvex::Dump(arguments.front());
    korvex::FlushOutput();
  } catch (...) {
    std::fprintf(stderr, "%s\n", korvex::PendingError().Description().c_str());
    return 1;
  }
  return 0;
}
