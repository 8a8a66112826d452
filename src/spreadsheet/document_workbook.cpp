#include "spreadsheet/document_workbook.h"

#include <string_view>
#include <utility>

namespace korvex {
namespace {

// What a sheet without cells takes up, generously.
constexpr std::size_t kSheetMemory = 512;

}  // namespace

void SheetCollector::Begin(SheetInfo sheet) {
  if (!cells_.empty()) before_ += cells_.back().MemorySize();
  before_ += kSheetMemory + sheet.name.size();
  budget_.CheckMemory(before_);
  sheets_.push_back(std::move(sheet));
  cells_.emplace_back().Clear();
}

void DocumentWorkbook::Load() {
  ReadBudget budget(buffers_.file.size());
  SheetCollector sheets(budget);
  ReadDocument(budget, sheets);
  sheets_ = std::move(sheets.sheets_);
  held_ = std::move(sheets.cells_);
  is_held_.assign(held_.size(), true);
}

std::span<const std::byte> DocumentWorkbook::Document() const {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const std::string_view text(reinterpret_cast<const char*>(buffers_.file.data()),
                              buffers_.file.size());
  const std::size_t mark = text.starts_with(kMark) ? kMark.size() : 0;
  const std::size_t first = text.find_first_not_of(" \t\r\n", mark);
  return std::span(buffers_.file).subspan(first > mark && first < text.size() ? first : 0);
}

void DocumentWorkbook::ReadSheet(std::size_t index, SheetCells& cells) {
  if (!is_held_[index]) Load();
  is_held_[index] = false;
  std::swap(cells, held_[index]);
  cells.Finish();
}

}  // namespace korvex
