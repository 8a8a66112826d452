#include "spreadsheet/output_format.h"

#include <string>

#include "spreadsheet/refusal.h"
#include "util/text.h"

namespace korvex {
namespace {

constexpr const char* kOtherFormats[] = {".xlsx", ".xlsm", ".xlsb", ".xltx", ".ods", ".csv",
                                         ".tsv",  ".txt",  ".htm",  ".html", ".xml", ".pdf"};

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

}  // namespace korvex
