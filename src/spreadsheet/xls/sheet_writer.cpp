#include "spreadsheet/xls/biff8_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <vector>

#include "spreadsheet/bytes/byte_writer.h"
#include "spreadsheet/cells/cell_store.h"
#include "spreadsheet/xls/biff_records.h"
#include "spreadsheet/xls/shared_string_writer.h"

namespace korvex {

namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

// Cells are written in groups of rows, in each the ROW records first. Other programs group by 32.
constexpr int kRowsTogether = 32;
static_assert(CellBlock::kRows % kRowsTogether == 0);

constexpr U16 kRowHeight = 255;  // twips, the height of 10 point Arial

// Settings of the calculation and of the printed page, all at their defaults.
template <class Out>
void WritePageSetup(Out& out) {
  out.PutRecord(biff::kCalcMode, U16{1});
  out.PutRecord(biff::kCalcCount, U16{100});
  out.PutRecord(biff::kRefMode, U16{1});
  out.PutRecord(biff::kIteration, U16{0});
  out.PutRecord(biff::kDelta, 0.001);
  out.PutRecord(biff::kSaveRecalc, U16{1});
  out.PutRecord(biff::kGridSet, U16{1});
  out.PutRecord(biff::kGuts, U64{0});
  out.PutRecord(biff::kDefaultRowHeight, U16{0}, kRowHeight);
  out.PutRecord(biff::kWsBool, U16{0x04C1});
  out.PutRecord(biff::kHeader);
  out.PutRecord(biff::kFooter);
  out.PutRecord(biff::kHCenter, U16{0});
  out.PutRecord(biff::kVCenter, U16{0});
  // SETUP  0 uint16 paper, 2 scale in %, 4 first page, 6 pages across, 8 pages down, 10 options,
  //        12 resolution, 14 vertical resolution, 16 double header margin, 24 footer margin,
  //        32 uint16 copies. Paper 0 with bit 2 of the options: the printer's own settings hold.
  out.PutRecord(biff::kSetup, U16{0}, U16{100}, U16{1}, U16{1}, U16{1}, U16{4}, U16{300}, U16{300},
                0.5, 0.5, U16{1});
  out.PutRecord(biff::kDefaultColumnWidth, U16{8});
}

// A date with its time does not fit into a column of the default width and would show as "####".
//   COLINFO  0 uint16 first column, 2 last column, 4 width, 6 XF, 8 options, 10 of no meaning
template <class Out>
void WriteDateColumns(const CellStore& cells, Out& out) {
  constexpr U16 kWidth = 17 * 256;  // in 1/256 of a digit's width
  for (int column = 0; column < cells.ColumnCount(); ++column) {
    if (!cells.HasDates(column)) continue;
    const auto at = static_cast<U16>(column);
    out.PutRecord(biff::kColInfo, at, at, kWidth, CellFormat::kGeneral, U16{0}, U16{0});
  }
}

// An RK value holds a number in 32 bits. None when the number is not exactly one of these:
//   bit 0      the number was multiplied by 100
//   bit 1      the upper 30 bits are a signed integer, else those of a double whose rest is zero
std::optional<U32> EncodeRk(double number) {
  constexpr U64 kBitsLost = 0x3'FFFF'FFFF;
  constexpr double kLimit = 536870912;  // 2^29
  const U64 bits = std::bit_cast<U64>(number);
  if ((bits & kBitsLost) == 0) return static_cast<U32>(bits >> 32);
  const auto encode = [](std::int32_t integer, U32 type) {
    return (static_cast<U32>(integer) << 2) | type;
  };
  if (std::abs(number) >= kLimit) return {};
  const auto integer = static_cast<std::int32_t>(number);
  if (integer == number) return encode(integer, 2);
  // Readers divide by 100. The product is rounded (0.29 gives 28.999…), so that only the division
  // tells whether the number comes back exactly.
  const double scaled = number * 100;
  if (std::abs(scaled) >= kLimit - 1) return {};
  const auto hundredths = static_cast<std::int32_t>(scaled + (scaled < 0 ? -0.5 : 0.5));
  if (hundredths / 100.0 == number) return encode(hundredths, 3);
  return {};
}

// Dates are shown with what they have: serials below 1 are times of day, whole ones dates alone.
CellFormat FormatOf(CellKind kind, double number) {
  if (!IsDateKind(kind)) return CellFormat::kGeneral;
  if (number >= 0 && number < 1) return CellFormat::kTime;
  return std::trunc(number) == number ? CellFormat::kDate : CellFormat::kDateTime;
}

// Writes the rows of a sheet from cells that are stored by column. All cells begin with uint16 row,
// uint16 column, uint16 XF; from offset 6 on:
//   NUMBER    double
//   RK        uint32 RK value
//   LABELSST  uint32 index of a shared text
//   BOOLERR   uint8 value or error code, uint8 1 for an error
// and several cells in one record:
//   MULRK     0 uint16 row, 2 uint16 first column, 4 {uint16 XF, uint32 RK value} …, uint16 last
//             column
template <class Out>
class CellsWriter {
 public:
  CellsWriter(const CellStore& cells, SharedStringWriter& strings, Out& out)
      : cells_(cells), strings_(strings), out_(out), blocks_(ColumnCount()) {}

  // DIMENSIONS  0 uint32 first row, 4 uint32 after the last row, 8 uint16 first column,
  //             10 uint16 after the last column, 12 uint16 0
  void WriteDimensions() {
    int first_column = cells_.ColumnCount();
    int column_end = 0;
    int row_end = 0;
    for (int column = 0; column < cells_.ColumnCount(); ++column) {
      const int end = cells_.RowEnd(column);
      if (end == 0) continue;
      first_column = std::min(first_column, column);
      column_end = column + 1;
      row_end = std::max(row_end, end);
    }
    if (row_end == 0) first_column = 0;
    out_.PutRecord(biff::kDimensions, U32{0}, static_cast<U32>(row_end),
                   static_cast<U16>(first_column), static_cast<U16>(column_end), U16{0});
  }

  void WriteRows() {
    for (int block = 0; block < cells_.BlockCount(); ++block) {
      for (std::size_t column = 0; column < blocks_.size(); ++column) {
        blocks_[column] = cells_.Block(block, static_cast<int>(column));
      }
      for (int row = 0; row < CellBlock::kRows; row += kRowsTogether) {
        WriteRowsTogether(block * CellBlock::kRows, row);
      }
    }
  }

 private:
  // First column and one past the last one that is not empty.
  struct RowExtent {
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  struct RkCell {
    CellFormat format;
    U32 value;
  };

  std::size_t ColumnCount() const { return static_cast<std::size_t>(cells_.ColumnCount()); }

  // ROW  0 uint16 row, 2 first column, 4 after the last column, 6 height, 8 uint32 0,
  //      12 uint16 options, 14 uint16 XF
  void WriteRowsTogether(int block_row, int first) {
    std::array<RowExtent, kRowsTogether> extents{};
    for (std::size_t column = 0; column < blocks_.size(); ++column) {
      if (blocks_[column] == nullptr) continue;
      const CellKind* const kinds = blocks_[column]->kinds.data() + first;
      for (std::size_t row = 0; row < kRowsTogether; ++row) {
        if (kinds[row] == CellKind::kEmpty) continue;
        if (extents[row].end == 0) extents[row].begin = column;
        extents[row].end = column + 1;
      }
    }
    for (int row = 0; row < kRowsTogether; ++row) {
      const RowExtent& extent = extents[static_cast<std::size_t>(row)];
      if (extent.end == 0) continue;
      out_.PutRecord(biff::kRow, static_cast<U16>(block_row + first + row),
                     static_cast<U16>(extent.begin), static_cast<U16>(extent.end), kRowHeight,
                     U32{0}, U16{0x0100}, CellFormat::kGeneral);
    }
    for (int row = 0; row < kRowsTogether; ++row) {
      WriteRow(block_row, static_cast<std::size_t>(first + row),
               extents[static_cast<std::size_t>(row)]);
    }
  }

  void WriteRow(int block_row, std::size_t row_in_block, const RowExtent& extent) {
    row_ = static_cast<U16>(static_cast<std::size_t>(block_row) + row_in_block);
    for (std::size_t column = extent.begin; column < extent.end; ++column) {
      const CellBlock* const block = blocks_[column];
      const CellKind kind = block == nullptr ? CellKind::kEmpty : block->kinds[row_in_block];
      if (kind == CellKind::kEmpty) {
        EndRun(column);
      } else {
        WriteCell(column, kind, block->bits[row_in_block]);
      }
    }
    EndRun(extent.end);
  }

  void WriteCell(std::size_t column, CellKind kind, U64 bits) {
    const double number = std::bit_cast<double>(bits);
    const CellFormat format = FormatOf(kind, number);
    const bool is_number = kind == CellKind::kNumber || IsDateKind(kind);
    if (const auto rk = is_number ? EncodeRk(number) : std::nullopt) {
      run_[run_size_++] = {format, *rk};
      return;
    }
    EndRun(column);
    const auto at = static_cast<U16>(column);
    if (is_number) {
      out_.PutRecord(biff::kNumber, row_, at, format, number);
    } else if (kind == CellKind::kText) {
      out_.PutRecord(biff::kLabelSst, row_, at, format, strings_.IndexOf(static_cast<U32>(bits)));
    } else {
      const bool is_error = kind == CellKind::kError;
      const auto value = static_cast<U8>(is_error ? number : number != 0);
      out_.PutRecord(biff::kBoolErr, row_, at, format, value, static_cast<U8>(is_error));
    }
  }

  // RK values wait for their neighbours. Writes those of the cells in front of `column`, several of
  // them as one record.
  void EndRun(std::size_t column) {
    if (run_size_ == 0) return;
    const auto first = static_cast<U16>(column - run_size_);
    if (run_size_ == 1) {
      out_.PutRecord(biff::kRk, row_, first, run_[0].format, run_[0].value);
    } else {
      out_.Put(biff::kMulRk, static_cast<U16>(6 + 6 * run_size_), row_, first);
      for (std::size_t i = 0; i < run_size_; ++i) out_.Put(run_[i].format, run_[i].value);
      out_.Put(static_cast<U16>(column - 1));
    }
    run_size_ = 0;
  }

  const CellStore& cells_;
  SharedStringWriter& strings_;
  Out& out_;
  std::vector<const CellBlock*> blocks_;  // of the rows being written, by column
  std::array<RkCell, biff::kMaxColumns> run_;
  std::size_t run_size_ = 0;
  U16 row_ = 0;
};

// WINDOW2  0 uint16 options (bits 3 and 8: panes that are frozen and were never split; 9 and 10:
//          selected, active), 2 first row, 4 first column shown, 6 uint32 colour of the grid,
//          10 zoom in the page preview, 12 zoom, 14 uint32 of no meaning
// A sheet whose first row holds anything has it as its header row, which stays in view:
// PANE       0 uint16 columns in the left panes, 2 rows in the upper ones, 4 first row of the lower
//            ones, 6 first column of the right ones, 8 uint16 pane with the cursor
// SELECTION  0 uint8 pane, 1 uint16 row and 3 column of the cursor, 5 range with the cursor,
//            7 ranges, 9 {uint16 first row, last row, uint8 first column, last column} ...
template <class Out>
void WriteWindow(const SheetContent& sheet, Out& out) {
  constexpr U8 kLowerLeft = 2;
  const bool has_headers = sheet.cells->CountInRow(0) > 0;
  const auto options =
      static_cast<U16>(0x00B6 | (sheet.selected ? 0x0600 : 0) | (has_headers ? 0x0108 : 0));
  out.PutRecord(biff::kWindow2, options, U16{0}, U16{0}, U32{0x40}, U16{0}, U16{0}, U32{0});
  if (!has_headers) return;
  out.PutRecord(biff::kPane, U16{0}, U16{1}, U16{1}, U16{0}, U16{kLowerLeft});
  out.PutRecord(biff::kSelection, kLowerLeft, U16{1}, U16{0}, U16{0}, U16{1}, U16{1}, U16{1}, U8{0},
                U8{0});
}

}  // namespace

template <class Out>
void WriteSheet(const SheetContent& sheet, SharedStringWriter& strings, Out& out) {
  out.PutRecord(biff::kBof, biff::kVersionBiff8, biff::kWorksheetSubstream, U16{0x0DBB},
                U16{0x07CC}, U32{0}, U32{6});
  WritePageSetup(out);
  WriteDateColumns(*sheet.cells, out);
  CellsWriter cells(*sheet.cells, strings, out);
  cells.WriteDimensions();
  cells.WriteRows();
  WriteWindow(sheet, out);
  out.PutRecord(biff::kEof);
}

template void WriteSheet(const SheetContent&, SharedStringWriter&, ByteWriter&);
template void WriteSheet(const SheetContent&, SharedStringWriter&, ByteCounter&);

}  // namespace korvex
