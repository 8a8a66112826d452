// Reads the cells of one sheet out of a workbook stream (BIFF5 to BIFF8).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "spreadsheet/biff_globals.h"
#include "spreadsheet/record_reader.h"

namespace korvex {

// The records of a sheet are taken as they come; row blocks and indices are not used. Embedded
// charts, which are sub-streams of their own with cells in them, are passed over. A number whose
// format shows a date becomes a Date, counted in the 1900 date system, as long as it lies within
// the years 1900 to 9999; an infinite number becomes #NUM!.
//
// Cells begin with uint16 row, uint16 column, uint16 XF (offset 6 behind that):
//   NUMBER double · RK uint32 · LABELSST uint32 index · LABEL, RSTRING uint16 length, text
//   BOOLERR uint8 value, uint8 1 for an error · BLANK nothing
//   FORMULA 8 bytes of result: a double, or type in byte 0 and 0xFFFF in the last two bytes
//   (0 text, in the STRING record that follows; 1 Boolean and 2 error, in byte 2; 3 "")
// and several in one:
//   MULRK uint16 row, uint16 first column, {uint16 XF, uint32 RK} …, uint16 last column
//   MULBLANK uint16 row, uint16 first column, uint16 XF …, uint16 last column
class SheetReader {
 public:
  SheetReader(const BiffGlobals& globals, const SharedStrings& strings, SheetCells& cells)
      : globals_(globals), strings_(strings), cells_(cells) {}

  // Reads from the sheet's BOF at `offset` to its EOF; false when the stream ends before that.
  // Error 1004 (a predicate) for a text that is not in the shared strings, and for a value outside
  // of the sheet.
  bool Read(std::span<const std::byte> stream, std::size_t offset);
  // Bytes of the stream that have been read.
  std::size_t BytesRead() const { return bytes_read_; }

 private:
  bool ReadRecords(std::span<const std::byte> stream, std::size_t offset);
  void ReadRecord(std::uint16_t number, std::span<const std::byte> data);
  bool IsCell(std::span<const std::byte> data, std::size_t minimum);
  static void CheckColumn(std::uint16_t row, std::uint16_t column);
  void ReadNumber(const std::byte* data);
  void ReadRk(const std::byte* data);
  void ReadMulRk(std::span<const std::byte> data);
  void ReadBlanks(std::span<const std::byte> data, int count);
  void ReadLabel(const std::byte* data);
  void ReadLabelSst(const std::byte* data);
  void ReadBoolErr(const std::byte* data);
  void ReadFormula(const std::byte* data);
  void ReadString();
  TextRange ReadText(std::size_t length_offset);
  void AddNumber(std::uint16_t row, std::uint16_t column, std::uint16_t xf, double number);
  void AddBoolean(const std::byte* cell, std::uint8_t value);
  void AddError(const std::byte* cell, std::uint8_t code);

  const BiffGlobals& globals_;
  const SharedStrings& strings_;
  SheetCells& cells_;
  RecordReader records_{{}, 0};
  std::size_t bytes_read_ = 0;
  int depth_ = 0;  // of sub-streams
  bool awaits_string_ = false;
};

}  // namespace korvex
