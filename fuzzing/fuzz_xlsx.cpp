// The documents of .xlsx workbooks. The input holds up to six of them with form feeds between: a
// worksheet, the shared strings, the styles, the workbook, its relationships and those of the
// package. Of those that are missing the first three are empty, and the others sound.
#include <string>
#include <vector>

#include "fuzzing/fuzz_target.h"
#include "tests/spreadsheet/zip_bytes.h"

using namespace korvex;
using namespace korvex::test;

namespace {

std::vector<std::string> Split(std::string_view input, std::size_t most) {
  std::vector<std::string> documents;
  while (documents.size() + 1 < most && input.find('\f') != std::string_view::npos) {
    documents.emplace_back(input.substr(0, input.find('\f')));
    input.remove_prefix(documents.back().size() + 1);
  }
  documents.emplace_back(input);
  return documents;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<std::string> kSound = {
      "",
      "",
      "",
      "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" xmlns:r=\"" +
          kXlsxRelations +
          "\"><sheets><sheet name=\"data\" r:id=\"worksheet\"/></sheets></workbook>",
      Relationships(Relationship("worksheet", "worksheet", "s.xml") +
                    Relationship("sharedStrings", "sharedStrings", "t.xml") +
                    Relationship("styles", "styles", "f.xml")),
      Relationships(Relationship("officeDocument", "officeDocument", "w.xml")),
  };
  std::vector<std::string> documents =
      Split({reinterpret_cast<const char*>(data), size}, kSound.size());
  while (documents.size() < kSound.size()) documents.push_back(kSound[documents.size()]);
  const std::string file = Zip({
      {"_rels/.rels", documents[5]},
      {"_rels/w.xml.rels", documents[4]},
      {"s.xml", documents[0]},
      {"t.xml", documents[1]},
      {"f.xml", documents[2]},
      {"w.xml", documents[3]},
  });
  fuzz::ReadWorkbook(std::as_bytes(std::span(file)));
  return 0;
}
