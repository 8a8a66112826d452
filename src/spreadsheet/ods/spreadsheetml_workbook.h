// An XML spreadsheet of 2003 (SpreadsheetML): one XML document, whose file is often called .xls or
// .xml.
#pragma once

#include "spreadsheet/ods/document_workbook.h"

namespace korvex {

class SpreadsheetMlWorkbook : public DocumentWorkbook {
 public:
  explicit SpreadsheetMlWorkbook(ReadBuffers& buffers);

 private:
  void ReadDocument(ReadBudget& budget, SheetCollector& sheets) override;
};

}  // namespace korvex
