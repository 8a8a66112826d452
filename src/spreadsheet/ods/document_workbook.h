// Workbooks that are one document, with all their sheets after each other.
#pragma once

#include <cstddef>
#include <deque>
#include <span>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/read_budget.h"
#include "spreadsheet/bytes/xml_parser.h"
#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

// The sheets of a document on the way through it.
class SheetCollector {
 public:
  explicit SheetCollector(const ReadBudget& budget) : budget_(budget) {}

  // Ends the sheet at hand, if any.
  void Begin(SheetInfo sheet);
  SheetInfo& Sheet() { return sheets_.back(); }
  SheetCells& Cells() { return cells_.back(); }
  // Counts memory that is held beside the cells until the end of the document.
  void Hold(std::size_t size) {
    before_ += size;
    budget_.CheckMemory(before_);
  }
  // To be called wherever a little of the document can stand for much. `more` is held elsewhere.
  void CheckMemory(std::size_t more = 0) const {
    budget_.CheckMemory(before_ + cells_.back().UsedMemory() + more);
  }

 private:
  friend class DocumentWorkbook;

  const ReadBudget& budget_;
  std::vector<SheetInfo> sheets_;
  std::deque<SheetCells> cells_;  // not finished yet
  std::size_t before_ = 0;        // what is held beside the cells of the sheet at hand
};

// A document that is not in an archive has no check sum. What damage makes of a name there would
// hide a cell or move others in silence: a name that no such document has is refused.
[[noreturn]] void RefuseName(std::string_view name);
void CheckAttributes(const XmlElement& element, std::span<const XmlName> known);
// For text between elements: what is left of a tag stands there.
void CheckBlank(std::string_view text);

// Finding one sheet takes the way through the whole document, so that it is gone once for all
// sheets, when the workbook is opened.
class DocumentWorkbook : public WorkbookReader {
 public:
  const std::vector<SheetInfo>& Sheets() const override { return sheets_; }
  CellAddress LastPlace() const override { return kLastXmlPlace; }
  // Hands out the cells that are held; goes through the document again for those that were handed
  // out already.
  void ReadSheet(std::size_t index, SheetCells& cells) override;

 protected:
  explicit DocumentWorkbook(ReadBuffers& buffers) : buffers_(buffers) {}

  // Constructors of derived classes end with it.
  void Load();
  virtual void ReadDocument(ReadBudget& budget, SheetCollector& sheets) = 0;
  // The file as an XML document, without the blank lines that some programs put in front of it.
  std::span<const std::byte> Document() const;

 private:
  ReadBuffers& buffers_;
  std::vector<SheetInfo> sheets_;
  std::deque<SheetCells> held_;
  std::vector<bool> is_held_;
};

}  // namespace korvex
