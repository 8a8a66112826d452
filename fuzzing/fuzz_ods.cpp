// The content of .ods workbooks.
#include "fuzzing/fuzz_target.h"
#include "tests/spreadsheet/zip_bytes.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string file = korvex::test::Zip({
      {"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
      {"content.xml", {reinterpret_cast<const char*>(data), size}},
  });
  korvex::fuzz::ReadWorkbook(std::as_bytes(std::span(file)));
  return 0;
}
