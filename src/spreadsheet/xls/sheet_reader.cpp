#include "spreadsheet/xls/sheet_reader.h"

#include <algorithm>
#include <bit>
#include <string>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/xls/biff_records.h"
#include "spreadsheet/xls/biff_text.h"
#include "spreadsheet/xls/formula_check.h"
#include "spreadsheet/xls/record_forms.h"
#include "text/text.h"

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

// A number in 32 bits:
//   bit 0  the number is divided by 100
//   bit 1  the upper 30 bits are a signed integer, else those of a double whose rest is zero
double RkNumber(std::uint32_t rk) {
  const double number = (rk & 2) != 0 ? static_cast<std::int32_t>(rk) >> 2
                                      : std::bit_cast<double>(std::uint64_t{rk & ~3u} << 32);
  return (rk & 1) != 0 ? number / 100 : number;
}

constexpr int kMostGap = 32;  // columns between a cell and the next one in its row
constexpr int kRecordsAhead = 4;
constexpr std::size_t kMostInFront = 512;  // bytes of an unknown record in front of all cells
constexpr std::size_t kFormulaHead = 22;   // in front of the formula itself
constexpr std::uint16_t kCalculateOnLoad = 2;
constexpr std::size_t kMostDoubted = 1000;
constexpr std::size_t kMostCellsLookedAt = 2'000'000;  // by the formulas of a sheet

}  // namespace

void SheetReader::Read(std::span<const std::byte> stream, std::size_t offset) {
  records_ = RecordReader(stream, offset);
  ReadRecords();
  bytes_read_ = records_.NextOffset() - offset;
}

// The sheet ends with the EOF of its own sub-stream; charts between have a BOF and an EOF of
// theirs.
void SheetReader::ReadRecords() {
  int depth = 0;  // of sub-streams
  null_records_ = 0;
  nulls_end_ = 0;
  awaits_string_ = false;
  maybe_lost_.reset();
  has_rows_ = false;
  for (;;) {
    if (depth == 1 && !awaits_string_ && !maybe_lost_) ReadCommonRecords();
    if (!records_.Next()) break;
    const std::uint16_t number = records_.Number();
    // Some writers begin a sheet without its BOF.
    if (depth == 0 && number != biff::kBof) depth = 1;
    if (number == biff::kBof) {
      ++depth;
    } else if (number == biff::kEof) {
      if (!records_.Data().empty()) CheckEnd();
      if (--depth == 0) return EndFormula();
    } else if (depth == 1) {
      ReadRecord(number, records_.Data());
    }
  }
  RefuseEnd();
}

// Reads the kinds of records that nearly all cells have, and the ROW records between them, as long
// as there is nothing about them to look at more closely: of the record that this stops at
// ReadRecord makes what there is to make, or refuses it.
void SheetReader::ReadCommonRecords() {
  constexpr auto kHead = [](biff::Record number, std::uint32_t length) {
    return number | length << 16;
  };
  constexpr std::size_t kLongest = biff::kRecordHeaderSize + 16;
  const std::span<const DateForm> forms = globals_.date_forms;
  const std::byte* const end = records_.Ahead().data() + records_.Ahead().size();
  const std::byte* next = records_.Ahead().data();
  const auto read = [&](double number, std::uint16_t xf, const std::byte* cell) {
    if (xf >= forms.size()) return false;
    const TypedNumber typed = TypeNumber(number, forms[xf], globals_.uses_1904);
    cells_.AddNumber(Row(cell), Column(cell), typed.kind, typed.number);
    return true;
  };
  bool is_read = true;
  while (is_read && static_cast<std::size_t>(end - next) >= kLongest) {
    const std::byte* const cell = next + biff::kRecordHeaderSize;
    const std::uint32_t head = LoadU32(next);
    const bool is_inside = Column(cell) < biff::kMaxColumns;
    switch (head) {
      case kHead(biff::kNumber, 14):
        is_read = is_inside && read(LoadF64(cell + 6), Xf(cell), cell);
        break;
      case kHead(biff::kRk, 10):
        is_read = is_inside && read(RkNumber(LoadU32(cell + 6)), Xf(cell), cell);
        break;
      case kHead(biff::kLabelSst, 10): {
        const std::uint32_t text = LoadU32(cell + 6);
        is_read = is_inside && text < strings_.Count();
        if (is_read) cells_.AddSharedText(Row(cell), Column(cell), strings_.Range(text));
        break;
      }
      case kHead(biff::kRow, 16):
        has_rows_ = true;
        break;
      default:
        is_read = false;
    }
    if (is_read) next = cell + (head >> 16);
  }
  records_.PassTo(next);
}

// Checks of every cell's record: it holds what its kind needs at least, and a column of a sheet.
// The next cell ends the wait for a formula's text, and proves that a doubtful record stood between
// cells.
[[gnu::always_inline]] inline void SheetReader::StartCell(std::span<const std::byte> data,
                                                          std::size_t minimum) {
  if (data.size() < minimum) RefuseRecord("is too short for its kind");
  if (awaits_string_) EndFormula();
  if (maybe_lost_) RefuseLostCell();
  CheckColumn(Row(data.data()), Column(data.data()));
}

// The same for kinds of one size.
[[gnu::always_inline]] inline void SheetReader::StartFixedCell(std::span<const std::byte> data,
                                                               std::size_t size) {
  StartCell(data, size);
  if (data.size() != size) CheckOddLength();
}

[[gnu::always_inline]] inline void SheetReader::CheckColumn(std::uint16_t row,
                                                            std::uint16_t column) {
  if (column >= biff::kMaxColumns) RefuseOutside({row, column});
}

void SheetReader::ReadRecord(std::uint16_t number, std::span<const std::byte> data) {
  switch (number) {
    case biff::kNumber:
      StartFixedCell(data, 14);
      return ReadNumber(data.data());
    case biff::kRk:
      StartFixedCell(data, 10);
      return ReadRk(data.data());
    case biff::kLabelSst:
      StartFixedCell(data, 10);
      return ReadLabelSst(data.data());
    case biff::kFormula:
    case biff::kFormulaBiff3:
    case biff::kFormulaBiff4:
      StartCell(data, 16);
      return ReadFormula(data);
    case biff::kString:
      return ReadString();
    case biff::kMulRk:
      StartCell(data, 12);
      return ReadMulRk(data);
    case biff::kLabel:
    case biff::kRString:
      StartCell(data, 8);
      return ReadLabel(data.data());
    case biff::kBoolErr:
      StartFixedCell(data, 8);
      return ReadBoolErr(data.data());
    case biff::kBlank:
      return ReadBlanks(data, 6);
    case biff::kMulBlank:
      return ReadBlanks(data, 8);
    default:
      return PassOver(number, data);
  }
}

// Skips a record that is no cell. Its number and length must be ones that a sheet can have: if not,
// an earlier header was damaged, and the reader is in the middle of other records, where it loses
// cells.
void SheetReader::PassOver(std::uint16_t number, std::span<const std::byte> data) {
  if (number == 0 && data.empty()) return PassOverNull();
  if (IsTooLong(number, data.size())) RefuseTooLong();
  if (number == biff::kRow) {
    has_rows_ = true;
    if (data.size() != 16) CheckOddLength();
  }
  if (maybe_lost_ && (number == biff::kRow || number == biff::kDbCell)) RefuseLostCell();
  if (!BelongsBetweenCells(number)) CheckIsNoCell(number, data);
}

void SheetReader::PassOverNull() {
  null_records_ = records_.Offset() == nulls_end_ ? null_records_ + 1 : 1;
  nulls_end_ = records_.NextOffset();
  if (null_records_ > kMostNullRecords) RefuseRecord(kTooManyNulls);
}

// Looks for cells whose record number is damaged. Such a record is of an unknown kind; or one bit
// of its number makes a cell of it whose length it has, and it begins with the place where the next
// cell is due. It is refused when another cell follows: after the last cell there may be records
// of any kind. The place alone proves nothing, because some writers put links and notes between
// cells, whose records begin with a row and a column, too.
void SheetReader::CheckIsNoCell(std::uint16_t number, std::span<const std::byte> data) {
  if (maybe_lost_) return;
  const bool is_unknown = !IsKnown(number);
  if (cells_.IsUnfilled()) {
    // A stream without globals may hold their records here.
    if (globals_.is_single_sheet) return;
    if (is_unknown && data.size() >= kMostInFront) RefuseRecord("is of no kind that sheets hold");
    if (is_unknown && has_rows_) maybe_lost_ = records_.Offset();
    return;
  }
  if (is_unknown || (IsNearCell(number, data) && HoldsNextPlace(data))) {
    maybe_lost_ = records_.Offset();
  }
}

// Whether changing one bit of the number gives the record of a cell that has this length.
bool SheetReader::IsNearCell(std::uint16_t number, std::span<const std::byte> data) {
  const auto is_near = [number](std::uint16_t cell) {
    return std::has_single_bit(static_cast<unsigned>(number ^ cell));
  };
  switch (data.size()) {
    case 8:
      if (is_near(biff::kBoolErr)) return true;
      break;
    case 10:
      if (is_near(biff::kRk) || is_near(biff::kLabelSst)) return true;
      break;
    case 14:
      if (is_near(biff::kNumber)) return true;
      break;
    default:
      break;
  }
  if (is_near(biff::kMulRk)) return data.size() >= 12 && data.size() % 6 == 0;
  if (is_near(biff::kFormula) || is_near(biff::kFormulaBiff4)) {
    return data.size() >= kFormulaHead &&
           data.size() == kFormulaHead + LoadU16(data.data() + kFormulaHead - 2);
  }
  return is_near(biff::kLabel) && data.size() > 8 && data.size() > LoadU16(data.data() + 6) + 6u;
}

// Whether the data begins like a cell that follows the last one: further right in its row, or in
// the next row, with a format that the workbook has.
bool SheetReader::HoldsNextPlace(std::span<const std::byte> data) const {
  if (data.size() < 6) return false;
  const CellPlace last = cells_.LastAdded();
  const CellPlace place = {Row(data.data()), Column(data.data())};
  const bool is_next = place.row == last.row
                           ? place.column > last.column && place.column <= last.column + kMostGap
                           : place.row == last.row + 1 && place.column <= last.column;
  const std::size_t formats = globals_.date_forms.size();
  return is_next && (formats == 0 || Xf(data.data()) < formats);
}

// For a record of another length than its kind has. Some writers make such records, and then the
// records that follow are ones of a sheet. After a damaged length they are not.
void SheetReader::CheckOddLength() {
  if (IsTooLong(records_.Number(), records_.Data().size())) RefuseTooLong();
  RecordReader ahead = records_;
  for (int i = 0; i < kRecordsAhead && ahead.Next() && ahead.Number() != biff::kEof; ++i) {
    const bool is_null = ahead.Number() == 0 && ahead.Data().empty();
    if (!is_null && !IsSheetRecord(ahead.Number(), ahead.Data().size())) {
      RefuseRecord("has " + GroupedDigits(records_.Data().size()) +
                   " bytes of data, and no record of a worksheet stands behind them");
    }
  }
}

void SheetReader::RefuseRecord(std::string_view what) const {
  Refuse("is damaged: in sheet \"" + std::string(sheet_) + "\" the record at byte " +
         GroupedDigits(records_.Offset()) + " of the workbook stream " + std::string(what));
}

void SheetReader::RefuseTooLong() const {
  RefuseRecord("has " + GroupedDigits(records_.Data().size()) +
               " bytes of data, more than its kind can");
}

void SheetReader::RefuseFormat(std::uint16_t xf) const {
  RefuseRecord("has the format number " + GroupedDigits(xf) + ", and there are " +
               GroupedDigits(globals_.date_forms.size()) + " formats from 0 on");
}

void SheetReader::RefuseText(const std::byte* cell) const {
  Refuse("is damaged: cell " + CellName({Row(cell), Column(cell)}) + " shows text number " +
         GroupedDigits(std::uint64_t{LoadU32(cell + 6)} + 1) +
         " of the workbook's texts, of which " + GroupedDigits(strings_.Count()) + " can be read");
}

void SheetReader::RefuseLostCell() const {
  Refuse("is damaged: in sheet \"" + std::string(sheet_) + "\" the record at byte " +
         GroupedDigits(*maybe_lost_) +
         " of the workbook stream stands between cells, where none of its kind does");
}

// An EOF with data in it is damage unless nothing follows it, or another sheet does.
void SheetReader::CheckEnd() const {
  const std::optional<RecordReader::Header> next = records_.PeekHeader();
  if (next && next->number != biff::kBof) RefuseRecord("would end the sheet, but holds data");
}

void SheetReader::RefuseEnd() const {
  const std::optional<RecordReader::Header> header = records_.PeekHeader();
  const std::string where = "is damaged: in sheet \"" + std::string(sheet_) + "\" the ";
  if (!header) {
    Refuse(where + "records end at byte " + GroupedDigits(records_.NextOffset()) +
           " of the workbook stream without the one that closes the sheet (EOF)");
  }
  Refuse(where + "record at byte " + GroupedDigits(records_.NextOffset()) +
         " of the workbook stream reaches beyond the end of the stream");
}

void SheetReader::ReadNumber(const std::byte* data) {
  AddNumber(Row(data), Column(data), Xf(data), LoadF64(data + 6));
}

void SheetReader::ReadRk(const std::byte* data) {
  AddNumber(Row(data), Column(data), Xf(data), RkNumber(LoadU32(data + 6)));
}

// The last column comes after the cells and must agree with their number.
void SheetReader::ReadMulRk(std::span<const std::byte> data) {
  const std::uint16_t row = Row(data.data());
  const std::uint16_t first = Column(data.data());
  const std::size_t end = data.size() - 2 - (data.size() - 6) % 6;
  const std::uint16_t last = LoadU16(data.data() + end);
  if (last != first + (end - 4) / 6 - 1) {
    RefuseRecord("holds the cells of other columns than it says");
  }
  if (end + 2 != data.size()) CheckOddLength();
  CheckColumn(row, last);
  std::uint16_t column = first;
  for (std::size_t at = 4; at < end; at += 6) {
    AddNumber(row, column++, LoadU16(data.data() + at), RkNumber(LoadU32(data.data() + at + 2)));
  }
}

// Blanks count only for the last cell of the sheet. Outside of the sheet they lose nothing.
void SheetReader::ReadBlanks(std::span<const std::byte> data, std::size_t minimum) {
  if (data.size() < minimum) RefuseRecord("is too short for its kind");
  if (awaits_string_) EndFormula();
  const std::uint16_t first = Column(data.data());
  int count = 1;
  if (records_.Number() == biff::kMulBlank) {
    count = static_cast<int>(data.size() - 6) / 2;
  } else if (data.size() >= 14) {
    // A NUMBER record becomes a BLANK by one wrong bit; as such it is too long.
    RefuseTooLong();
  }
  count = std::min(count, biff::kMaxColumns - first);
  if (count > 0) cells_.AddBlanks(Row(data.data()), first, count);
}

void SheetReader::ReadLabelSst(const std::byte* data) {
  const std::uint32_t index = LoadU32(data + 6);
  if (index >= strings_.Count()) RefuseText(data);
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

// Takes the stored result. A text follows in a STRING record: until then the cell holds an empty
// one.
void SheetReader::ReadFormula(std::span<const std::byte> record) {
  const std::byte* const data = record.data();
  const std::byte* const result = data + 6;
  asks_for_calculation_ = (LoadU16(data + 14) & kCalculateOnLoad) != 0;
  formula_ = {};
  if (record.size() >= kFormulaHead) {
    const std::size_t size = LoadU16(data + kFormulaHead - 2);
    if (record.size() < kFormulaHead + size) RefuseRecord("is too short for its formula");
    // Constants of the formula (arrays) may come after it.
    if (record.size() != kFormulaHead + size) CheckOddLength();
    formula_ = record.subspan(kFormulaHead, size);
  }
  if (LoadU16(result + 6) != 0xFFFF) {
    const double number = LoadF64(result);
    AddNumber(Row(data), Column(data), Xf(data), number);
    return DoubtFormula(number == 0, false);
  }
  switch (LoadU8(result)) {
    case 0:
      awaits_string_ = true;
      return cells_.AddOwnText(Row(data), Column(data), {});
    case 3:
      cells_.AddOwnText(Row(data), Column(data), {});
      return DoubtFormula(true, true);
    case 1:
      AddBoolean(data, LoadU8(result + 2));
      break;
    case 2:
      AddError(data, LoadU8(result + 2));
      break;
    default:
      AddError(data, kNoValueError);
  }
  DoubtFormula(false, false);
}

// Writers that do not calculate store zeros or empty texts. Some of them ask the reading program to
// calculate; others, which store only empty texts, do not.
void SheetReader::DoubtFormula(bool is_zero, bool is_text) {
  const DoubtGround ground =
      asks_for_calculation_ ? DoubtGround::kAsksForCalculation : DoubtGround::kEmptyText;
  const bool is_doubted = is_zero && (asks_for_calculation_ || is_text);
  cells_.DoubtLast(ground, is_doubted);
  if (is_doubted && doubted_.size() < kMostDoubted) {
    doubted_.push_back({formula_, ground, is_text});
  }
}

// One formula that gives something else than its stored result shows that nobody calculated any. If
// the workbook asks for calculation, formulas that cannot be worked out but look at filled cells
// show it, too, unless the stored result of another one is right.
bool SheetReader::IsFalse(DoubtGround ground) const {
  bool is_true = false;
  bool is_doubted = false;
  std::size_t cells_left = kMostCellsLookedAt;
  for (const DoubtedFormula& formula : doubted_) {
    if (formula.ground != ground) continue;
    switch (
        CheckEmptyResult(formula.tokens, formula.is_text, globals_.is_biff8, cells_, cells_left)) {
      case ResultCheck::kFalse:
        return true;
      case ResultCheck::kTrue:
        is_true = true;
        break;
      case ResultCheck::kDoubted:
        is_doubted |= !formula.is_text;
        break;
      case ResultCheck::kUnknown:
        break;
    }
  }
  return ground == DoubtGround::kAsksForCalculation && is_doubted && !is_true;
}

// The text of the last formula. Records of a shared formula or an array may come between the two.
void SheetReader::ReadString() {
  if (!awaits_string_) return CheckIsNoCell(biff::kString, records_.Data());
  if (records_.Data().size() < 2) RefuseRecord("is too short for its kind");
  const TextRange text = ReadText(0);
  cells_.ReplaceLastText(text);
  DoubtFormula(text.length == 0, true);
  awaits_string_ = false;
}

// Called when the next cell, or the end, comes instead of the text: the formula has no result.
void SheetReader::EndFormula() {
  if (awaits_string_) cells_.LoseLast();
  awaits_string_ = false;
}

// The text of the current record whose 16-bit length is at this offset. It may go on in
// CONTINUE records, which the loop over records then skips.
TextRange SheetReader::ReadText(std::size_t length_offset) {
  const std::uint16_t length = LoadU16(records_.Data().data() + length_offset);
  ContinuedData data(records_.Rest(), records_.Data().size());
  data.Advance(length_offset + 2);
  TextArena& arena = cells_.OwnTexts();
  const std::uint32_t start = arena.Size();
  const bool is_whole = globals_.is_biff8 ? AppendUnicodeText(data, length, arena)
                                          : AppendByteText(data, length, globals_.code_page, arena);
  if (!is_whole) RefuseRecord("ends before its text does");
  return arena.RangeSince(start);
}

void SheetReader::AddNumber(std::uint16_t row, std::uint16_t column, std::uint16_t xf,
                            double number) {
  DateForm form = DateForm::kNone;
  if (xf < globals_.date_forms.size()) {
    form = globals_.date_forms[xf];
  } else if (!globals_.date_forms.empty()) {
    // If a format was lost, all those after it have shifted, and dates become numbers.
    RefuseFormat(xf);
  }
  const TypedNumber typed = TypeNumber(number, form, globals_.uses_1904);
  cells_.AddNumber(row, column, typed.kind, typed.number);
}

void SheetReader::AddBoolean(const std::byte* cell, std::uint8_t value) {
  cells_.AddNumber(Row(cell), Column(cell), CellKind::kBoolean, value != 0 ? 1 : 0);
}

// Unknown codes become #VALUE!: no other part of the program knows them.
void SheetReader::AddError(const std::byte* cell, std::uint8_t code) {
  const int known = IsErrorCode(code) ? code : kNoValueError;
  cells_.AddNumber(Row(cell), Column(cell), CellKind::kError, known);
}

}  // namespace korvex
