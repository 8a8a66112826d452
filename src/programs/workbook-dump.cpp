// Prints the cells of a workbook, for checks against other readers.
//
//   workbook-dump FILE
//
// One line for every cell of every worksheet that is not empty, with tabs between: sheet name, row,
// column (both one-based), kind, value. Dates are serial numbers of the 1900 date system. Exit
// status 1 when the file is refused, 2 for wrong arguments.
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
#include "workbook/cell_text.h"

namespace korvex {
namespace {

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

void AppendEscaped(std::string_view text, std::string& out) {
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

template <class Number>
void AppendNumber(Number number, std::string& out) {
  char digits[32];
  const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  out.append(digits, static_cast<std::size_t>(end - digits));
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

// `lines` is scratch storage. Lines are written many at a time: a sheet can have millions.
void DumpCells(const std::string& sheet, const SheetCells& cells, std::string& lines) {
  constexpr std::size_t kAtOnce = 64 * 1024;
  std::string start;  // of the lines of a row
  int row = 0;
  lines.clear();
  for (std::size_t i = 0; i < cells.Count(); ++i) {
    const SheetCells::Entry cell = cells.At(i);
    if (cell.row != row) {
      row = cell.row;
      start.clear();
      AppendEscaped(sheet, start);
      start += '\t';
      AppendNumber(row, start);
      start += '\t';
    }
    lines += start;
    AppendNumber(cell.column, lines);
    lines += '\t';
    lines += cell.is_uncalculated ? "uncalculated" : KindName(cell.value.kind);
    lines += '\t';
    AppendValue(cell.value, lines);
    lines += '\n';
    if (lines.size() < kAtOnce) continue;
    WriteOutput(lines);
    lines.clear();
  }
  WriteOutput(lines);
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
      DumpCells(sheet.name, buffers.cells, lines);
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
