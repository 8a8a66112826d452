// .xls workbooks: compound files, and streams of records without one.
#include "fuzzing/fuzz_target.h"
#include "spreadsheet/file_kind.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto file = std::as_bytes(std::span(data, size));
  if (korvex::RecognizeFile(file).form == korvex::WorkbookForm::kXls) {
    korvex::fuzz::ReadWorkbook(file);
  }
  return 0;
}
