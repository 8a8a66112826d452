#include "spreadsheet/xls/biff_globals.h"

#include <bit>
#include <optional>
#include <string>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/xls/biff_records.h"
#include "spreadsheet/xls/biff_text.h"
#include "spreadsheet/xls/record_forms.h"
#include "spreadsheet/xls/record_reader.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr std::size_t kMaxSheets = 65536;  // their numbers have 16 bits

class GlobalsReader {
 public:
  GlobalsReader(std::span<const std::byte> stream, bool is_book)
      : records_(stream, 0), is_book_(is_book) {}

  BiffGlobals Read();

 private:
  void CheckRecord(std::uint16_t number, std::size_t length);
  void CheckNeighbours(const RecordReader::Header& before) const;
  [[noreturn]] static void RefuseRecord(std::size_t offset, const std::string& what);
  void ReadBof();
  void ReadRecord();
  void ReadFormat(std::span<const std::byte> data);
  void ReadBoundSheet(std::span<const std::byte> data);
  void ResolveFormats();
  void DecodeNames();
  std::string_view Text(std::span<const std::byte> data, std::size_t length_size);

  RecordReader records_;
  int null_records_ = 0;  // in a row
  bool is_book_;
  BiffGlobals globals_;
  std::vector<std::uint16_t> xf_formats_;
  std::vector<std::optional<DateForm>> written_formats_;  // by id, of those that are written down
  std::vector<std::span<const std::byte>> names_;
  TextArena scratch_;
};

BiffGlobals GlobalsReader::Read() {
  ReadBof();
  RecordReader::Header before = {biff::kBof, 0};
  for (;;) {
    if (!records_.Next()) {
      if (records_.PeekHeader()) RefuseRecord(records_.NextOffset(), "reaches beyond its end");
      break;
    }
    const std::uint16_t number = records_.Number();
    CheckRecord(number, records_.Data().size());
    CheckNeighbours(before);
    before = {number, static_cast<std::uint16_t>(records_.Data().size())};
    if (number == biff::kEof) {
      globals_.has_end = true;
      break;
    }
    // Without their EOF the globals end where the first sheet begins.
    if (number == biff::kBof) break;
    ReadRecord();
  }
  ResolveFormats();
  DecodeNames();
  if (globals_.sheets.empty() && globals_.is_single_sheet) {
    globals_.sheets.push_back({"Sheet1", SheetKind::kWorksheet});
    globals_.sheet_offsets.push_back(0);
  }
  return std::move(globals_);
}

// Checks the form of every record, used or not: with a damaged length the reader is in the middle
// of other records, and skips formats and texts.
void GlobalsReader::CheckRecord(std::uint16_t number, std::size_t length) {
  null_records_ = number == 0 && length == 0 ? null_records_ + 1 : 0;
  if (null_records_ > kMostNullRecords) {
    RefuseRecord(records_.Offset(), kTooManyNulls);
  }
  if (length > biff::kMaxRecordData) {
    RefuseRecord(records_.Offset(),
                 "has " + GroupedDigits(length) + " bytes of data, more than a record can");
  }
}

// Cells name their format, and the workbook its sheets, by index. If the number of one record is
// damaged, the record is not counted, all those after it shift, and dates become numbers. Records
// of a kind stand together: one between two of a kind was one of them when it has their length, or
// when its number differs from theirs by one bit.
void GlobalsReader::CheckNeighbours(const RecordReader::Header& before) const {
  if (before.number != biff::kXf && before.number != biff::kFormat &&
      before.number != biff::kBoundSheet) {
    return;
  }
  const std::optional<RecordReader::Header> next = records_.PeekHeader();
  const std::uint16_t number = records_.Number();
  if (!next || number == before.number || next->number != before.number) return;
  const std::size_t length = records_.Data().size();
  if ((length == before.length && length == next->length) ||
      std::has_single_bit(static_cast<unsigned>(number ^ before.number))) {
    RefuseRecord(records_.Offset(), "stands between others of a kind, and is of none");
  }
}

void GlobalsReader::RefuseRecord(std::size_t offset, const std::string& what) {
  Refuse("is damaged: the record at byte " + GroupedDigits(offset) + " of its workbook stream " +
         what);
}

// The version decides about the form of texts. Some writers leave it out or write another number;
// then the name of the stream tells: Book up to BIFF7, Workbook in BIFF8.
void GlobalsReader::ReadBof() {
  if (!records_.Next()) Refuse("is damaged: its workbook stream is empty");
  switch (records_.Number()) {
    case biff::kBof:
      break;
    case biff::kBofBiff2:
    case biff::kBofBiff3:
    case biff::kBofBiff4:
      RefuseAs(kOldFormat);
    default:
      Refuse("is damaged: its workbook stream does not begin with a BOF record");
  }
  const std::span<const std::byte> data = records_.Data();
  const std::uint16_t version = data.size() >= 2 ? LoadU16(data.data()) : std::uint16_t{0};
  const std::uint16_t kind = data.size() >= 4 ? LoadU16(data.data() + 2) : biff::kGlobalsSubstream;
  globals_.is_biff8 =
      version == biff::kVersionBiff8 || (version != biff::kVersionBiff5 && !is_book_);
  globals_.is_single_sheet = kind == biff::kWorksheetSubstream;
}

void GlobalsReader::ReadRecord() {
  const std::span<const std::byte> data = records_.Data();
  switch (records_.Number()) {
    case biff::kCodePage:
      if (data.size() >= 2) globals_.code_page = CodePage(LoadU16(data.data()));
      break;
    case biff::kDateMode:
      if (data.size() >= 2) globals_.uses_1904 = LoadU16(data.data()) == 1;
      break;
    case biff::kFormat:
      ReadFormat(data);
      break;
    case biff::kXf:
      xf_formats_.push_back(data.size() >= 4 ? LoadU16(data.data() + 2) : std::uint16_t{0});
      break;
    case biff::kBoundSheet:
      ReadBoundSheet(data);
      break;
    case biff::kSst:
      globals_.strings = records_.Rest();
      globals_.strings_length = data.size();
      break;
    case biff::kExtSst:
      globals_.string_index = data;
      break;
    default:
      break;
  }
}

void GlobalsReader::ReadFormat(std::span<const std::byte> data) {
  if (data.size() < 3) return;
  const std::size_t id = LoadU16(data.data());
  if (id >= written_formats_.size()) written_formats_.resize(id + 1);
  written_formats_[id] = DateFormOf(Text(data.subspan(2), globals_.is_biff8 ? 2 : 1));
}

void GlobalsReader::ReadBoundSheet(std::span<const std::byte> data) {
  if (data.size() < 7 || globals_.sheets.size() == kMaxSheets) return;
  SheetInfo sheet;
  switch (LoadU8(data.data() + 5)) {
    case 1:
      sheet.kind = SheetKind::kMacro;
      break;
    case 2:
      sheet.kind = SheetKind::kChart;
      break;
    case 6:
      sheet.kind = SheetKind::kModule;
      break;
    default:
      break;
  }
  globals_.sheet_offsets.push_back(LoadU32(data.data()));
  globals_.sheets.push_back(std::move(sheet));
  names_.push_back(data.subspan(6));
}

// Done at the end, because a FORMAT record may come after the XF that uses it.
void GlobalsReader::ResolveFormats() {
  for (const std::uint16_t id : xf_formats_) {
    const bool is_written = id < written_formats_.size() && written_formats_[id];
    globals_.date_forms.push_back(is_written ? *written_formats_[id] : BuiltInDateForm(id));
  }
}

// Done at the end, because the code page may come after the names.
void GlobalsReader::DecodeNames() {
  for (std::size_t i = 0; i < names_.size(); ++i) globals_.sheets[i].name = Text(names_[i], 1);
}

// A text that comes after its length of one or two bytes. Valid until the next call.
std::string_view GlobalsReader::Text(std::span<const std::byte> data, std::size_t length_size) {
  scratch_.Clear();
  if (data.size() < length_size) return {};
  const std::uint16_t length = length_size == 1 ? LoadU8(data.data()) : LoadU16(data.data());
  const std::span<const std::byte> rest = data.subspan(length_size);
  ContinuedData text(rest, rest.size());
  if (globals_.is_biff8) {
    AppendUnicodeText(text, length, scratch_);
  } else {
    AppendByteText(text, length, globals_.code_page, scratch_);
  }
  return scratch_.Text(scratch_.RangeSince(0));
}

// Reads texts to the end of the data, whatever the number in front of them says. False when the
// data ends within a text.
bool Decode(ContinuedData data, SharedStrings& strings) {
  strings.Clear();
  if (!data.Skip(8)) return true;
  std::uint16_t length;
  for (;;) {
    while (AppendShortText(data, strings.Texts())) strings.EndText();
    if (!data.ReadU16(length)) return true;
    if (!AppendUnicodeText(data, length, strings.Texts())) return false;
    strings.EndText();
  }
}

// Whether EXTSST is an index of that many texts: it has an entry for each group, and the last is
// filled.
bool IsIndexOf(std::span<const std::byte> index, std::size_t texts) {
  constexpr std::size_t kEntrySize = 8;
  if (index.size() < 2 + kEntrySize) return false;
  const std::size_t group = LoadU16(index.data());
  const std::size_t entries = (index.size() - 2) / kEntrySize;
  return group > 0 && entries == (texts + group - 1) / group &&
         LoadU32(index.data() + 2 + (entries - 1) * kEntrySize) > 0;
}

}  // namespace

BiffGlobals ReadBiffGlobals(std::span<const std::byte> stream, bool is_book) {
  return GlobalsReader(stream, is_book).Read();
}

void ReadSharedStrings(const BiffGlobals& globals, SharedStrings& strings) {
  strings.Clear();
  if (globals.strings.empty()) return;
  const bool is_whole = Decode(ContinuedData(globals.strings, globals.strings_length), strings);
  if (globals.strings_length < 8) return;
  const std::size_t stated = LoadU32(globals.strings.data() + 4);
  const std::size_t count = strings.Count();
  const auto refuse = [&] {
    Refuse("is damaged: its table of shared texts should hold " + GroupedDigits(stated) +
           " texts, and holds " + GroupedDigits(count));
  };
  // More texts than stated: zeros after the last text read as empty texts and are harmless. But
  // zeros may also have replaced texts; then the last of the stated ones is empty.
  const auto is_empty = [&](std::size_t index) { return strings.Range(index).length == 0; };
  if (stated > 0 && count > stated) {
    bool is_padding = is_whole && !is_empty(stated - 1);
    for (std::size_t i = stated; i < count; ++i) is_padding &= is_empty(i);
    if (!is_padding) refuse();
  }
  // Fewer texts than stated: some writers count wrong. It is damage if the data ends within a text,
  // or if the index agrees with the number.
  if (count < stated && (!is_whole || IsIndexOf(globals.string_index, stated))) refuse();
}

}  // namespace korvex
