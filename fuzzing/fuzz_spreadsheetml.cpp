// Workbooks of one XML document, and all that is told apart from them and refused.
#include "fuzzing/fuzz_target.h"
#include "fuzzing/read_workbook.h"
#include "spreadsheet/file_kind.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto file = std::as_bytes(std::span(data, size));
  switch (korvex::RecognizeFile(file)) {
    case korvex::FileKind::kZip:
    case korvex::FileKind::kCompoundFile:
    case korvex::FileKind::kBareBiff:
      return 0;  // of other targets
    default:
      korvex::fuzz::ReadWorkbook(file);
      return 0;
  }
}
