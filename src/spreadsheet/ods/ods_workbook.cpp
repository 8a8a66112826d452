#include <string>
#include <utility>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/ods/ods_reader.h"

namespace korvex {
namespace {

constexpr const char* kContent = "content.xml";
constexpr const char* kManifest = "META-INF/manifest.xml";

// The manifest lists the parts; for an encrypted part it also says how to decrypt it. Its first
// megabyte is searched.
bool IsEncrypted(const ZipArchive& archive, ReadBudget& budget) {
  if (!archive.Has(kManifest)) return false;
  std::string manifest(1u << 20, '\0');
  ZipPartReader part(archive, kManifest, budget);
  std::size_t size = 0;
  std::size_t count = 0;
  do {
    count = part.Read({manifest.data() + size, manifest.size() - size});
    size += count;
  } while (count > 0 && size < manifest.size());
  return manifest.find("encryption-data") < size;
}

}  // namespace

OdsWorkbook::OdsWorkbook(ReadBuffers& buffers, std::optional<ZipArchive> archive)
    : DocumentWorkbook(buffers), archive_(std::move(archive)) {
  Load();
}

// An archive has check sums of its own; a document without one is checked name by name.
void OdsWorkbook::ReadDocument(ReadBudget& budget, SheetCollector& sheets) {
  OdsReader reader(sheets, archive_.has_value());
  if (archive_) {
    if (IsEncrypted(*archive_, budget)) {
      Refuse("needs a password: it is an encrypted OpenDocument spreadsheet");
    }
    ParseXmlPart(*archive_, kContent, budget, ods::kNamespaces, reader);
  } else {
    ParseXml(SourceOf(Document()), "", ods::kNamespaces, reader);
  }
  if (!reader.HasSpreadsheet()) RefuseAs("an OpenDocument file without a spreadsheet");
}

}  // namespace korvex
