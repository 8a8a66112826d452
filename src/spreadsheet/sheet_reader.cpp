#include "spreadsheet/sheet_reader.h"

#include <algorithm>
#include <bit>
#include <string>

#include "spreadsheet/biff_records.h"
#include "spreadsheet/biff_text.h"
#include "spreadsheet/cell_place.h"
#include "spreadsheet/refusal.h"
#include "spreadsheet/typed_number.h"
#include "util/text.h"

namespace korvex {
namespace {

std::uint16_t Row(const std::byte* cell) {
  return LoadU16(cell);
}
std::uint16_t Column(const std::byte* cell) {
  return LoadU16(cell + 2);
}
std::uint16_t Xf(const std::byte* cell) {
  return LoadU16(cell + 4);
}

// Bit 0: the number is divided by 100. Bit 1: the other 30 bits are an integer, else they are the
// upper bits of a double.
double RkNumber(std::uint32_t rk) {
  const double number = (rk & 2) != 0 ? static_cast<std::int32_t>(rk) >> 2
                                      : std::bit_cast<double>(std::uint64_t{rk & ~3u} << 32);
  return (rk & 1) != 0 ? number / 100 : number;
}

}  // namespace

bool SheetReader::Read(std::span<const std::byte> stream, std::size_t offset) {
  const bool has_end = ReadRecords(stream, offset);
  bytes_read_ = stream.size() - offset - records_.Left();
  return has_end;
}

bool SheetReader::ReadRecords(std::span<const std::byte> stream, std::size_t offset) {
  records_ = RecordReader(stream, offset);
  depth_ = 0;
  awaits_string_ = false;
  while (records_.Next()) {
    const std::uint16_t number = records_.Number();
    // Some writers begin a sheet without its BOF.
    if (depth_ == 0 && number != biff::kBof) depth_ = 1;
    if (number == biff::kBof) {
      ++depth_;
    } else if (number == biff::kEof) {
      if (--depth_ == 0) return true;
    } else if (depth_ == 1) {
      ReadRecord(number, records_.Data());
    }
  }
  return false;
}

[[gnu::always_inline]] inline void SheetReader::CheckColumn(std::uint16_t row,
                                                            std::uint16_t column) {
  if (column >= biff::kMaxColumns) RefuseOutside({row, column});
}

// Whether the record of a value holds all that it must. A formula's text does not come behind the
// next cell.
[[gnu::always_inline]] inline bool SheetReader::IsCell(std::span<const std::byte> data,
                                                       std::size_t minimum) {
  if (data.size() < minimum) return false;
  awaits_string_ = false;
  CheckColumn(Row(data.data()), Column(data.data()));
  return true;
}

void SheetReader::ReadRecord(std::uint16_t number, std::span<const std::byte> data) {
  switch (number) {
    case biff::kNumber:
      if (IsCell(data, 14)) ReadNumber(data.data());
      break;
    case biff::kRk:
      if (IsCell(data, 10)) ReadRk(data.data());
      break;
    case biff::kLabelSst:
      if (IsCell(data, 10)) ReadLabelSst(data.data());
      break;
    case biff::kFormula:
    case biff::kFormulaBiff3:
    case biff::kFormulaBiff4:
      if (IsCell(data, 14)) ReadFormula(data.data());
      break;
    case biff::kString:
      ReadString();
      break;
    case biff::kMulRk:
      if (IsCell(data, 12)) ReadMulRk(data);
      break;
    case biff::kLabel:
    case biff::kRString:
      if (IsCell(data, 8)) ReadLabel(data.data());
      break;
    case biff::kBoolErr:
      if (IsCell(data, 8)) ReadBoolErr(data.data());
      break;
    case biff::kBlank:
      if (data.size() >= 6) ReadBlanks(data, 1);
      break;
    case biff::kMulBlank:
      if (data.size() >= 8) ReadBlanks(data, static_cast<int>(data.size() - 6) / 2);
      break;
    default:
      break;
  }
}

void SheetReader::ReadNumber(const std::byte* data) {
  AddNumber(Row(data), Column(data), Xf(data), LoadF64(data + 6));
}

void SheetReader::ReadRk(const std::byte* data) {
  AddNumber(Row(data), Column(data), Xf(data), RkNumber(LoadU32(data + 6)));
}

void SheetReader::ReadMulRk(std::span<const std::byte> data) {
  const std::uint16_t row = Row(data.data());
  std::uint16_t column = Column(data.data());
  for (std::size_t at = 4; at + 8 <= data.size(); at += 6) {
    CheckColumn(row, column);
    AddNumber(row, column++, LoadU16(data.data() + at), RkNumber(LoadU32(data.data() + at + 2)));
  }
}

void SheetReader::ReadBlanks(std::span<const std::byte> data, int count) {
  awaits_string_ = false;
  const std::uint16_t first = Column(data.data());
  count = std::min(count, biff::kMaxColumns - first);
  if (count > 0) cells_.AddBlanks(Row(data.data()), first, count);
}

void SheetReader::ReadLabelSst(const std::byte* data) {
  const std::uint32_t index = LoadU32(data + 6);
  if (index >= strings_.Count()) {
    Refuse("is damaged: cell " + CellName({Row(data), Column(data)}) + " shows text number " +
           GroupedDigits(std::uint64_t{index} + 1) + " of the workbook's texts, of which " +
           GroupedDigits(strings_.Count()) + " can be read");
  }
  cells_.AddSharedText(Row(data), Column(data), strings_.Range(index));
}

void SheetReader::ReadLabel(const std::byte* data) {
  cells_.AddOwnText(Row(data), Column(data), ReadText(6));
}

void SheetReader::ReadBoolErr(const std::byte* data) {
  const std::uint8_t value = LoadU8(data + 6);
  if (LoadU8(data + 7) != 0) {
    AddError(data, value);
  } else {
    AddBoolean(data, value);
  }
}

void SheetReader::ReadFormula(const std::byte* data) {
  const std::byte* result = data + 6;
  if (LoadU16(result + 6) != 0xFFFF) {
    return AddNumber(Row(data), Column(data), Xf(data), LoadF64(result));
  }
  switch (LoadU8(result)) {
    case 0:
      awaits_string_ = true;
      [[fallthrough]];
    case 3:
      return cells_.AddOwnText(Row(data), Column(data), {});
    case 1:
      return AddBoolean(data, LoadU8(result + 2));
    case 2:
      return AddError(data, LoadU8(result + 2));
    default:
      return AddError(data, kNoValueError);
  }
}

// The result of the formula that came last; a shared formula or an array can stand between.
void SheetReader::ReadString() {
  if (awaits_string_ && records_.Data().size() >= 2) cells_.ReplaceLastText(ReadText(0));
  awaits_string_ = false;
}

// The text of the present record whose length stands at an offset.
TextRange SheetReader::ReadText(std::size_t length_offset) {
  const std::uint16_t length = LoadU16(records_.Data().data() + length_offset);
  ContinuedData data(records_.Rest(), records_.Data().size());
  data.Advance(length_offset + 2);
  TextArena& arena = cells_.OwnTexts();
  const std::uint32_t start = arena.Size();
  if (globals_.is_biff8) {
    AppendUnicodeText(data, length, arena);
  } else {
    AppendByteText(data, length, globals_.code_page, arena);
  }
  return arena.RangeSince(start);
}

void SheetReader::AddNumber(std::uint16_t row, std::uint16_t column, std::uint16_t xf,
                            double number) {
  const TypedNumber typed = TypeNumber(number, globals_.ShowsDate(xf), globals_.uses_1904);
  cells_.AddNumber(row, column, typed.kind, typed.number);
}

void SheetReader::AddBoolean(const std::byte* cell, std::uint8_t value) {
  cells_.AddNumber(Row(cell), Column(cell), CellKind::kBoolean, value != 0 ? 1 : 0);
}

void SheetReader::AddError(const std::byte* cell, std::uint8_t code) {
  switch (code) {
    case 0:
    case 7:
    case 15:
    case 23:
    case 29:
    case 36:
    case 42:
      break;
    default:
      code = kNoValueError;
  }
  cells_.AddNumber(Row(cell), Column(cell), CellKind::kError, code);
}

}  // namespace korvex
