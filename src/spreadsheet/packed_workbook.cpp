#include "spreadsheet/packed_workbook.h"

#include <utility>

#include "spreadsheet/refusal.h"
#include "spreadsheet/xlsx_workbook.h"

namespace korvex {

std::unique_ptr<WorkbookReader> OpenPackedWorkbook(ReadBuffers& buffers) {
  ZipArchive archive(buffers.file);
  if (archive.Has("xl/workbook.bin")) {
    Refuse("is an .xlsb workbook, which cannot be read: save it as .xlsx");
  }
  if (archive.Has("word/document.xml")) RefuseAs("a Word document");
  if (archive.Has("ppt/presentation.xml")) RefuseAs("a PowerPoint presentation");
  if (archive.Has("_rels/.rels")) {
    return std::make_unique<XlsxWorkbook>(buffers, std::move(archive));
  }
  RefuseAs("a zip archive");
}

}  // namespace korvex
