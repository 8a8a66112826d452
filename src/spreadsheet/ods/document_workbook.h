// Workbooks whose sheets are all in one XML document, one after the other.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/read_budget.h"
#include "spreadsheet/bytes/xml_parser.h"
#include "spreadsheet/bytes/zip_archive.h"
#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

// Collects the sheets of a document while it is read.
class SheetCollector {
 public:
  explicit SheetCollector(const ReadBudget& budget) : budget_(budget) {}

  // Starts the next sheet.
  void Begin(SheetInfo sheet);
  // Those of the sheet started last.
  SheetCells& Cells() { return cells_.back(); }
  // Call it before expanding repeated rows or cells. `more` is memory that is held elsewhere.
  void CheckMemory(std::size_t more = 0) const {
    budget_.CheckMemory(before_ + cells_.back().UsedMemory() + more);
  }

 private:
  friend class DocumentWorkbook;

  const ReadBudget& budget_;
  std::vector<SheetInfo> sheets_;
  std::deque<SheetCells> cells_;  // not finished yet
  std::size_t before_ = 0;        // memory beside the cells of the current sheet
};

// A document that is not in an archive has no check sum. One damaged byte in a name would hide a
// cell or move others in silence, so that names that no such document has are refused.
[[noreturn]] void RefuseName(std::string_view name);
void CheckAttributes(const XmlElement& element, std::span<const XmlName> known);
// Refuses text between elements that is not blank: it is what damage leaves of a tag.
void CheckBlank(std::string_view text);

// All sheets are read in one pass when the workbook is opened: even to find one, the whole document
// has to be read.
class DocumentWorkbook : public WorkbookReader {
 public:
  const std::vector<SheetInfo>& Sheets() const override { return sheets_; }
  CellAddress LastPlace() const override { return kLastXmlPlace; }
  // Gives away the cells that the pass has collected. A sheet asked for a second time is read
  // again.
  void ReadSheet(std::size_t index, SheetCells& cells) override;

 protected:
  explicit DocumentWorkbook(ReadBuffers& buffers) : buffers_(buffers) {}

  // Reads the document. Constructors of derived classes call it at their end.
  void Load();
  virtual void ReadDocument(ReadBudget& budget, SheetCollector& sheets) = 0;
  // The file without the blank lines that some programs put in front of the document.
  std::span<const std::byte> Document() const;

 private:
  ReadBuffers& buffers_;
  std::vector<SheetInfo> sheets_;
  std::deque<SheetCells> held_;
  std::vector<bool> is_held_;
};

// An OpenDocument spreadsheet: in a zip archive (.ods), or as one XML document (.fods).
class OdsWorkbook : public DocumentWorkbook {
 public:
  // `archive` is the buffers' file as an archive; none when the file is the document itself.
  OdsWorkbook(ReadBuffers& buffers, std::optional<ZipArchive> archive);

 private:
  void ReadDocument(ReadBudget& budget, SheetCollector& sheets) override;

  std::optional<ZipArchive> archive_;
};

// An XML spreadsheet of 2003 (SpreadsheetML): one XML document, whose file is often called .xls or
// .xml.
class SpreadsheetMlWorkbook : public DocumentWorkbook {
 public:
  explicit SpreadsheetMlWorkbook(ReadBuffers& buffers);

 private:
  void ReadDocument(ReadBudget& budget, SheetCollector& sheets) override;
};

}  // namespace korvex
