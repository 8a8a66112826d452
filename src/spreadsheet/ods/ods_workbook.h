// An OpenDocument spreadsheet: in a zip archive (.ods), or as one XML document (.fods).
#pragma once

#include <optional>

#include "spreadsheet/bytes/zip_archive.h"
#include "spreadsheet/ods/document_workbook.h"

namespace korvex {

class OdsWorkbook : public DocumentWorkbook {
 public:
  // `archive` is the buffers' file as an archive; none when the file is the document itself.
  OdsWorkbook(ReadBuffers& buffers, std::optional<ZipArchive> archive);

 private:
  void ReadDocument(ReadBudget& budget, SheetCollector& sheets) override;

  std::optional<ZipArchive> archive_;
};

}  // namespace korvex
