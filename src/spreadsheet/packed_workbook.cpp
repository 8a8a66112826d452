#include "spreadsheet/packed_workbook.h"

#include <string_view>
#include <utility>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/ods/ods_workbook.h"
#include "spreadsheet/xlsx/xlsx_workbook.h"

namespace korvex {

namespace {

// Refuses an archive that says to be something else than an OpenDocument spreadsheet.
void CheckType(const ZipArchive& archive, const ReadBuffers& buffers) {
  char type[64];
  ReadBudget budget(buffers.file.size());
  ZipPartReader part(archive, "mimetype", budget);
  const std::string_view read(type, part.Read(type));
  const std::string_view kFamily = "application/vnd.oasis.opendocument.";
  if (read.starts_with("application/vnd.sun.xml.calc")) {
    RefuseAs("a spreadsheet of OpenOffice.org 1 (.sxc)");
  }
  if (!read.starts_with(kFamily)) RefuseAs("a zip archive");
  if (!read.substr(kFamily.size()).starts_with("spreadsheet")) {
    RefuseAs("an OpenDocument file without a spreadsheet");
  }
}

}  // namespace

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

}  // namespace korvex
