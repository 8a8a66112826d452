// Reads the cells of one sheet out of a workbook stream (BIFF5 to BIFF8).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/xls/biff_globals.h"
#include "spreadsheet/xls/record_reader.h"

namespace korvex {

// Reads records in their order in the stream; row blocks and indices are not used. Embedded charts,
// which are sub-streams of their own with cells in them, are skipped.
//
// Cells begin with 0 uint16 row, 2 uint16 column, 4 uint16 XF; from offset 6 on:
//   NUMBER          double
//   RK              uint32 RK value
//   LABELSST        uint32 index of a shared text
//   LABEL, RSTRING  uint16 length, text
//   BOOLERR         uint8 value or error code, uint8 1 for an error
//   BLANK           nothing
//   FORMULA         6 result (8 bytes), 14 uint16 flags (bit 1: calculate on load), 16 uint32 of no
//                   meaning, 20 uint16 length of the formula, 22 formula
// The result is a double; or, when its last two bytes are 0xFFFF, byte 0 is its type: 0 text, in
// the STRING record that follows; 1 Boolean, in byte 2; 2 error code, in byte 2; 3 empty text.
// Several cells in one record:
//   MULRK     0 uint16 row, 2 uint16 first column, 4 {uint16 XF, uint32 RK value} …, uint16 last
//             column
//   MULBLANK  0 uint16 row, 2 uint16 first column, 4 uint16 XF …, uint16 last column
class SheetReader {
 public:
  // All must outlive the reader. `sheet` is the sheet's name in refusals.
  SheetReader(const BiffGlobals& globals, const SharedStrings& strings, std::string_view sheet,
              SheetCells& cells)
      : globals_(globals), strings_(strings), sheet_(sheet), cells_(cells) {}

  // Reads from the sheet's BOF at `offset` to its EOF. Refuses, naming the byte, a sheet without
  // EOF and records that show damage; also a text that is not in the shared strings and a value
  // outside of the sheet.
  void Read(std::span<const std::byte> stream, std::size_t offset);
  // Whether the zeros and empty texts that are doubted on this ground cannot be right. Call it when
  // the cells are finished, and if all results on that ground are doubted
  // (SheetCells::HasOnlyDoubts).
  bool IsFalse(DoubtGround ground) const;
  // Bytes of the stream that have been read.
  std::size_t BytesRead() const { return bytes_read_; }

 private:
  void ReadRecords();
  void ReadCommonRecords();
  void ReadRecord(std::uint16_t number, std::span<const std::byte> data);
  void StartCell(std::span<const std::byte> data, std::size_t minimum);
  void StartFixedCell(std::span<const std::byte> data, std::size_t size);
  static void CheckColumn(std::uint16_t row, std::uint16_t column);
  void PassOver(std::uint16_t number, std::span<const std::byte> data);
  void PassOverNull();
  void CheckIsNoCell(std::uint16_t number, std::span<const std::byte> data);
  static bool IsNearCell(std::uint16_t number, std::span<const std::byte> data);
  bool HoldsNextPlace(std::span<const std::byte> data) const;
  void CheckOddLength();
  // Out of line: a refusal that is put together within the loop over records slows down each of
  // them.
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseRecord(std::string_view what) const;
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseTooLong() const;
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseFormat(std::uint16_t xf) const;
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseText(const std::byte* cell) const;
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseLostCell() const;
  void CheckEnd() const;
  [[noreturn]] void RefuseEnd() const;
  void ReadNumber(const std::byte* data);
  void ReadRk(const std::byte* data);
  void ReadMulRk(std::span<const std::byte> data);
  void ReadBlanks(std::span<const std::byte> data, std::size_t minimum);
  void ReadLabel(const std::byte* data);
  void ReadLabelSst(const std::byte* data);
  void ReadBoolErr(const std::byte* data);
  void ReadFormula(std::span<const std::byte> record);
  void DoubtFormula(bool is_zero, bool is_text);
  void ReadString();
  void EndFormula();
  TextRange ReadText(std::size_t length_offset);
  void AddNumber(std::uint16_t row, std::uint16_t column, std::uint16_t xf, double number);
  void AddBoolean(const std::byte* cell, std::uint8_t value);
  void AddError(const std::byte* cell, std::uint8_t code);

  struct DoubtedFormula {
    std::span<const std::byte> tokens;
    DoubtGround ground;
    bool is_text;
  };

  const BiffGlobals& globals_;
  const SharedStrings& strings_;
  std::string_view sheet_;
  SheetCells& cells_;
  RecordReader records_{{}, 0};
  std::size_t bytes_read_ = 0;
  int null_records_ = 0;       // without anything between
  std::size_t nulls_end_ = 0;  // after the last of them
  bool has_rows_ = false;      // ROW records so far
  bool awaits_string_ = false;
  // The last formula.
  bool asks_for_calculation_ = false;
  std::span<const std::byte> formula_;
  std::vector<DoubtedFormula> doubted_;    // the first ones of the sheet
  std::optional<std::size_t> maybe_lost_;  // offset of a record that may be a cell's
};

}  // namespace korvex
