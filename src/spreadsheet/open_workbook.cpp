#include "spreadsheet/open_workbook.h"

#include "platform/file_system.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/file_kind.h"
#include "spreadsheet/ods/ods_workbook.h"
#include "spreadsheet/ods/spreadsheetml_workbook.h"
#include "spreadsheet/packed_workbook.h"
#include "spreadsheet/xls/biff_workbook.h"
#include "text/text.h"

namespace korvex {

namespace {

[[noreturn]] void RefuseKind(FileKind kind, std::size_t size) {
  if (kind == FileKind::kEmpty) Refuse("is empty (0 bytes)");
  const std::string end = "ends after " + GroupedDigits(size) + " bytes, ";
  if (kind == FileKind::kCutHeader) Refuse(end + "within its header");
  if (kind == FileKind::kCutXml) Refuse(end + "in the middle of its XML");
  RefuseAs(FileKindText(kind));
}

}  // namespace

void ReadWorkbookFile(const FileSystem& files, const std::string& path,
                      std::vector<std::byte>& content) {
  files.ReadStart(path, kTellingStart, content);
  const FileKind kind = RecognizeFile(content);
  if (!MayBeWorkbook(kind)) RefuseKind(kind, content.size());
  if (content.size() == kTellingStart) files.ReadFile(path, content);
}

std::unique_ptr<WorkbookReader> OpenWorkbookReader(ReadBuffers& buffers) {
  const FileKind kind = RecognizeFile(buffers.file);
  if (kind == FileKind::kCompoundFile || kind == FileKind::kBareBiff) {
    return std::make_unique<BiffWorkbook>(buffers);
  }
  if (kind == FileKind::kZip) return OpenPackedWorkbook(buffers);
  if (kind == FileKind::kFlatOpenDocument) {
    return std::make_unique<OdsWorkbook>(buffers, std::nullopt);
  }
  if (kind == FileKind::kSpreadsheetMl) return std::make_unique<SpreadsheetMlWorkbook>(buffers);
  RefuseKind(kind, buffers.file.size());
}

}  // namespace korvex
