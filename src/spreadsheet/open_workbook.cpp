#include "spreadsheet/open_workbook.h"

#include <optional>
#include <string_view>
#include <utility>

#include "platform/file_system.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/file_kind.h"
#include "spreadsheet/ods/document_workbook.h"
#include "spreadsheet/xls/biff_workbook.h"
#include "spreadsheet/xlsx/xlsx_workbook.h"

namespace korvex {
namespace {

// Refuses an archive that calls itself something else than an OpenDocument spreadsheet.
void CheckType(const ZipArchive& archive, const ReadBuffers& buffers) {
  char type[64];
  ReadBudget budget(buffers.file.size(), buffers.given_up.get());
  ZipPartReader part(archive, "mimetype", budget);
  const std::string_view read(type, part.Read(type));
  constexpr std::string_view kFamily = "application/vnd.oasis.opendocument.";
  if (read.starts_with("application/vnd.sun.xml.calc")) {
    RefuseAs("a spreadsheet of OpenOffice.org 1 (.sxc)");
  }
  if (!read.starts_with(kFamily)) RefuseAs("a zip archive");
  if (!read.substr(kFamily.size()).starts_with("spreadsheet")) {
    RefuseAs("an OpenDocument file without a spreadsheet");
  }
}

// The parts of an archive show which format its workbook has. OpenDocument files
// say their type in a part of its own, but some programs leave it out.
std::unique_ptr<WorkbookReader> OpenPackedWorkbook(ReadBuffers& buffers) {
  ZipArchive archive(buffers.file);
  const bool has_type = archive.Has("mimetype");
  if (has_type) CheckType(archive, buffers);
  if (has_type || (archive.Has("content.xml") && archive.Has("META-INF/manifest.xml"))) {
    return std::make_unique<OdsWorkbook>(buffers, std::move(archive));
  }
  if (archive.Has("_rels/.rels") || archive.Has("xl/workbook.xml")) {
    return std::make_unique<XlsxWorkbook>(buffers, std::move(archive));
  }
  RefuseAs("a zip archive");
}

}  // namespace

void ReadWorkbookFile(const FileSystem& files, const std::string& path,
                      std::vector<std::byte>& content) {
  // A folder of campaigns may hold films and disk images: their rest is never read.
  files.ReadStart(path, kTellingStart, content);
  const FileKind& kind = RecognizeFile(content);
  if (kind.form == WorkbookForm::kNone) RefuseFile(kind, content.size());
  if (content.size() == kTellingStart) files.ReadFile(path, content);
}

std::unique_ptr<WorkbookReader> OpenWorkbookReader(ReadBuffers& buffers) {
  const FileKind& kind = RecognizeFile(buffers.file);
  switch (kind.form) {
    case WorkbookForm::kXls:
      return std::make_unique<BiffWorkbook>(buffers);
    case WorkbookForm::kZip:
      return OpenPackedWorkbook(buffers);
    case WorkbookForm::kFlatOpenDocument:
      return std::make_unique<OdsWorkbook>(buffers, std::nullopt);
    case WorkbookForm::kSpreadsheetMl:
      return std::make_unique<SpreadsheetMlWorkbook>(buffers);
    case WorkbookForm::kNone:
      break;
  }
  RefuseFile(kind, buffers.file.size());
}

}  // namespace korvex
