#include "spreadsheet/xls/biff8_writer.h"

#include <gtest/gtest.h>

#include <bit>

#include "spreadsheet/cells/cell_store.h"
#include "spreadsheet/xls/record_reader.h"
#include "spreadsheet/xls/shared_string_writer.h"
#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

using enum biff::Record;

// The records of these numbers that are written for a sheet.
Bytes Records(const CellStore& cells, std::initializer_list<biff::Record> numbers) {
  TextPool texts;
  texts.Intern("unused");
  texts.Intern("used");
  SharedStringWriter strings(texts);
  const std::string sheet = Written([&](ByteWriter& out) {
    WriteSheet({"data", &cells, true}, strings, out);
  });
  Bytes found;
  RecordReader records(std::as_bytes(std::span(sheet)), 0);
  while (records.Next()) {
    for (const biff::Record number : numbers) {
      const auto* const data = reinterpret_cast<const char*>(records.Data().data());
      if (records.Number() == number) found += Record(number, Bytes(data, records.Data().size()));
    }
  }
  return found;
}

Bytes Row(unsigned row, unsigned first_column, unsigned column_end) {
  return Record(biff::kRow, U16(row) + U16(first_column) + U16(column_end) + U16(255) + U32(0) +
                                U16(0x0100) + U16(15));
}

StoredCell Stored(CellKind kind, double number) {
  return {kind, std::bit_cast<std::uint64_t>(number)};
}

TEST(SheetWriter, WritesTheSmallestRecordThatHoldsACellExactly) {
  constexpr unsigned kGeneral = 15, kDateTime = 16, kDate = 17, kTime = 18;
  CellStore cells;
  cells.Put(2, 1, Stored(CellKind::kNumber, 1.5));
  cells.Put(2, 2, Stored(CellKind::kNumber, -5000001));
  cells.Put(2, 3, Stored(CellKind::kDate, 37000));
  cells.Put(2, 5, Stored(CellKind::kNumber, 0.29));
  cells.Put(2, 6, Stored(CellKind::kNumber, 1.0 / 3));
  cells.Put(2, 7, {CellKind::kText, 1});
  cells.Put(600, 2, Stored(CellKind::kBoolean, 1));
  cells.Put(600, 3, Stored(CellKind::kError, 42));
  cells.Put(601, 3, Stored(CellKind::kDate, 37000.123));
  cells.Put(602, 3, Stored(CellKind::kDate, 0.1));
  cells.Put(603, 9, Stored(CellKind::kNumber, 1));
  cells.Put(603, 9, {});

  const auto width = [](unsigned column) {
    return Record(biff::kColInfo, U16(column) + U16(column) + U16(17 * 256) + U16(15) + U32(0));
  };
  const Bytes expected =
      width(3) + Record(biff::kDimensions, U32(0) + U32(603) + U16(1) + U16(8) + U16(0)) +
      Row(2, 1, 8) +
      Record(biff::kMulRk, U16(2) + U16(1) + U16(kGeneral) + U32(0x3FF80000) + U16(kGeneral) +
                               U32(static_cast<std::uint32_t>(-5000001 * 4 + 2)) + U16(kDate) +
                               U32(0x40E21100) + U16(3)) +
      Record(biff::kRk, CellHead(2, 5, kGeneral) + U32(29 * 4 + 3)) +
      NumberCell(2, 6, 1.0 / 3, kGeneral) +
      Record(biff::kLabelSst, CellHead(2, 7, kGeneral) + U32(0)) +
      // Rows of one group come before all its cells.
      Row(600, 2, 4) + Row(601, 3, 4) + Row(602, 3, 4) +
      Record(biff::kBoolErr, CellHead(600, 2, kGeneral) + U8(1) + U8(0)) +
      Record(biff::kBoolErr, CellHead(600, 3, kGeneral) + U8(42) + U8(1)) +
      NumberCell(601, 3, 37000.123, kDateTime) +
      Record(biff::kRk, CellHead(602, 3, kTime) + U32(10 * 4 + 3));
  EXPECT_EQ(
      Records(cells, {kColInfo, kDimensions, kRow, kRk, kMulRk, kNumber, kLabelSst, kBoolErr}),
      expected);
}

TEST(SheetWriter, KeepsAHeaderRowInView) {
  const auto window = [](unsigned options) {
    return Record(kWindow2, U16(options) + U32(0) + U32(0x40) + U32(0) + U32(0));
  };
  CellStore cells;
  cells.Put(1, 0, Stored(CellKind::kNumber, 1));
  EXPECT_EQ(Records(cells, {kWindow2, kPane, kSelection}), window(0x6B6));
  cells.Put(0, 3, {CellKind::kText, 1});
  EXPECT_EQ(Records(cells, {kWindow2, kPane, kSelection}),
            window(0x7BE) + Record(kPane, U16(0) + U16(1) + U16(1) + U16(0) + U16(2)) +
                Record(kSelection, U8(2) + U16(1) + U16(0) + U16(0) + U16(1) + U16(1) + U16(1) +
                                       U8(0) + U8(0)));
}

}  // namespace
}  // namespace korvex::test
