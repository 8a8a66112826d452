// Workbooks of one XML document, and all files that are recognised as something else and refused.
#include "fuzzing/fuzz_target.h"
#include "spreadsheet/file_kind.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto file = std::as_bytes(std::span(data, size));
  switch (korvex::RecognizeFile(file).form) {
    case korvex::WorkbookForm::kZip:
    case korvex::WorkbookForm::kXls:
      return 0;  // other targets read these
    default:
      korvex::fuzz::ReadWorkbook(file);
      return 0;
  }
}
