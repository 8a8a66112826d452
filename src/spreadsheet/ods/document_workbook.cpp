#include "spreadsheet/ods/document_workbook.h"

#include <string_view>
#include <utility>

#include "spreadsheet/bytes/refusal.h"

namespace korvex {
namespace {

// More than a sheet without cells takes.
constexpr std::size_t kSheetMemory = 512;
constexpr std::size_t kLongestName = 40;  // that a message shows

}  // namespace

void SheetCollector::Begin(SheetInfo sheet) {
  if (!cells_.empty()) before_ += cells_.back().MemorySize();
  before_ += kSheetMemory + sheet.name.size();
  budget_.CheckMemory(before_);
  sheets_.push_back(std::move(sheet));
  cells_.emplace_back().Clear(nullptr, SheetCells::Repeats::kAreDamage);
}

void RefuseName(std::string_view name) {
  const std::string shown =
      name.size() > kLongestName ? "a long name" : "the name \"" + std::string(name) + '"';
  Refuse("is damaged: its XML has " + shown + " that documents of its kind do not have there");
}

void CheckAttributes(const XmlElement& element, std::span<const XmlName> known) {
  const std::string_view other = element.AttributeBeside(known);
  if (!other.empty()) RefuseName(other);
}

void CheckBlank(std::string_view text) {
  if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) return;
  Refuse(
      "is damaged: its XML has text between its elements, where documents of its kind have none");
}

void DocumentWorkbook::Load() {
  ReadBudget budget(buffers_.file.size(), buffers_.given_up.get());
  SheetCollector sheets(budget);
  ReadDocument(budget, sheets);
  sheets_ = std::move(sheets.sheets_);
  held_ = std::move(sheets.cells_);
  is_held_.assign(held_.size(), true);
}

// The XML declaration must stand at the very beginning. A byte order mark may, unless blanks follow
// it.
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
  cells.Finish(ReadBudget(buffers_.file.size()));
}

}  // namespace korvex
