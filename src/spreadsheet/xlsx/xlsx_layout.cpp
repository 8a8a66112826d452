#include "spreadsheet/xlsx/xlsx_layout.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string_view>

#include "text/utf8.h"

namespace korvex {
namespace {

constexpr int kDefaultWidth = 8;
constexpr int kWidest = 50;
constexpr int kMargin = 1;
constexpr int kFilterButton = 3;
constexpr int kDateWidth = 17;  // with its time; what does not fit shows as "####"
// Numbers of up to 11 digits are shown with all of them where there is room.
constexpr double kWideNumber = 1e7;
constexpr int kNumberWidth = 12;
constexpr char32_t kFirstWideCharacter = 0x1100;  // from here on most are as wide as two

constexpr std::uint64_t kCellTags = 104;     // with those of a row
constexpr std::uint64_t kLongestEscape = 7;  // of one byte

int WidthOf(std::string_view text) {
  int width = 0;
  while (!text.empty() && width < kWidest) {
    const Utf8Character first = FirstUtf8(text);
    width += first.code != kInvalidByte && first.code >= kFirstWideCharacter ? 2 : 1;
    text.remove_prefix(first.length);
  }
  return width;
}

// Goes over the cells of one column.
class ColumnMeter {
 public:
  explicit ColumnMeter(const TextPool& texts) : texts_(texts) {}

  void Add(const CellBlock& block, bool has_headers) {
    for (std::size_t row = 0; row < block.kinds.size(); ++row) {
      const CellKind kind = block.kinds[row];
      if (kind == CellKind::kEmpty) continue;
      bytes_ += kCellTags;
      if (kind == CellKind::kText) {
        AddText(texts_.Text(static_cast<std::uint32_t>(block.bits[row])),
                has_headers && row == 0 ? kFilterButton : 0);
      } else if (IsDateKind(kind)) {
        width_ = std::max(width_, kDateWidth - kMargin);
      } else if (std::abs(std::bit_cast<double>(block.bits[row])) >= kWideNumber) {
        width_ = std::max(width_, kNumberWidth);
      }
    }
  }

  int Width() const {
    return width_ + kMargin <= kDefaultWidth ? 0 : std::min(width_ + kMargin, kWidest);
  }
  std::uint64_t MostBytes() const { return bytes_; }

 private:
  // A text has as many characters as bytes at most, so that few are looked at.
  void AddText(std::string_view text, int more) {
    bytes_ += text.size() * kLongestEscape;
    if (text.size() + static_cast<std::size_t>(more) <= static_cast<std::size_t>(width_)) return;
    if (width_ < kWidest) width_ = std::max(width_, WidthOf(text) + more);
  }

  const TextPool& texts_;
  int width_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace

XlsxLayout LayOut(const CellStore& cells, const TextPool& texts) {
  XlsxLayout layout;
  layout.has_headers = cells.CountInRow(0) > 0;
  const int blocks = cells.BlockCount();
  for (int column = 0; column < cells.ColumnCount(); ++column) {
    ColumnMeter meter(texts);
    for (int block = 0; block < blocks; ++block) {
      const CellBlock* const part = cells.Block(block, column);
      if (part != nullptr) meter.Add(*part, block == 0);
    }
    layout.widths.push_back(meter.Width());
    layout.most_bytes += meter.MostBytes();
    const int end = cells.RowEnd(column);
    if (end == 0) continue;
    layout.rows = std::max(layout.rows, end);
    layout.columns = column + 1;
  }
  return layout;
}

}  // namespace korvex
