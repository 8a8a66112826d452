#include "spreadsheet/packed_workbook.h"

#include <string_view>
#include <utility>

#include "spreadsheet/ods_workbook.h"
#include "spreadsheet/refusal.h"
#include "spreadsheet/xlsx_workbook.h"

namespace korvex {

namespace {

std::unique_ptr<WorkbookReader> OpenDocument(ReadBuffers& buffers, ZipArchive archive) {
  char type[64];
  ReadBudget budget(buffers.file.size());
  ZipPartReader part(archive, "mimetype", budget);
  const std::string_view read(type, part.Read(type));
  const std::string_view kFamily = "application/vnd.oasis.opendocument.";
  if (!read.starts_with(kFamily)) RefuseAs("a zip archive");
  if (!read.substr(kFamily.size()).starts_with("spreadsheet")) {
    RefuseAs("an OpenDocument file without a spreadsheet");
  }
  return std::make_unique<OdsWorkbook>(buffers, std::move(archive));
}

}  // namespace

std::unique_ptr<WorkbookReader> OpenPackedWorkbook(ReadBuffers& buffers) {
  ZipArchive archive(buffers.file);
  if (archive.Has("xl/workbook.bin")) {
    Refuse("is an .xlsb workbook, which cannot be read: save it as .xlsx");
  }
  if (archive.Has("word/document.xml")) RefuseAs("a Word document");
  if (archive.Has("ppt/presentation.xml")) RefuseAs("a PowerPoint presentation");
  if (archive.Has("mimetype")) {
    return OpenDocument(buffers, std::move(archive));
  }
  if (archive.Has("_rels/.rels")) {
    return std::make_unique<XlsxWorkbook>(buffers, std::move(archive));
  }
  RefuseAs("a zip archive");
}

}  // namespace korvex
