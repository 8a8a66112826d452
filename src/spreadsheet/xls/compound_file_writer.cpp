#include "spreadsheet/xls/compound_file_writer.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/error.h"
#include "spreadsheet/bytes/byte_writer.h"
#include "spreadsheet/xls/compound_file.h"

namespace korvex {

namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

constexpr U32 kSectorSize = 512;
constexpr U32 kFatEntriesPerSector = kSectorSize / 4;
// The last entry of a DIFAT sector is the id of the next one.
constexpr U32 kFatSectorsPerDifatSector = kFatEntriesPerSector - 1;
constexpr U64 kMaxStreamSize = 0x7FFFFFFF;

// The class of .xls workbooks, by which programs recognise the file whatever its name.
constexpr std::array<U8, 16> kWorkbookClassId = {0x20, 0x08, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                                 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
constexpr std::array<U8, 16> kNoClassId = {};

U64 RoundUp(U64 value, U64 unit) {
  return (value + unit - 1) / unit;
}

struct DirectoryEntry {
  std::u16string_view name;
  compound::EntryType type = compound::kEmptyEntry;
  U32 child = compound::kNoEntry;
  std::array<U8, 16> class_id = kNoClassId;
  U32 first_sector = 0;
  U64 size = 0;
};

// Writes 128 bytes of the directory; compound_file.h has the layout.
void WriteEntry(ByteWriter& out, const DirectoryEntry& entry) {
  constexpr std::size_t kNameUnits = 32;
  constexpr U8 kBlack = 1;
  constexpr std::size_t kStateAndTimes = 4 + 8 + 8;
  for (std::size_t i = 0; i < kNameUnits; ++i) {
    out.Put(static_cast<U16>(i < entry.name.size() ? entry.name[i] : 0));
  }
  const auto name_bytes = entry.name.empty() ? 0 : (entry.name.size() + 1) * 2;
  out.Put(static_cast<U16>(name_bytes), entry.type, kBlack);
  out.Put(compound::kNoEntry, compound::kNoEntry, entry.child);
  out.PutBytes(std::as_bytes(std::span(entry.class_id)));
  out.PutRepeated(std::byte{0}, kStateAndTimes);
  out.Put(entry.first_sector, entry.size);
}

// FAT entries of sectors that follow each other: each holds the id of the next one.
void WriteChain(ByteWriter& out, U32 first, U32 count) {
  for (U32 i = 1; i < count; ++i) out.Put(first + i);
  out.Put(compound::kEndOfChain);
}

// Marks the rest of the last FAT sector as free.
void FillSector(ByteWriter& out, U32 entries_written) {
  const U32 rest =
      (kFatEntriesPerSector - entries_written % kFatEntriesPerSector) % kFatEntriesPerSector;
  out.PutRepeated(std::byte{0xFF}, U64{rest} * 4);
}

}  // namespace

CompoundFileWriter::CompoundFileWriter(ByteWriter& out, U64 stream_size)
    : out_(out), stream_size_(stream_size) {
  if (stream_size > kMaxStreamSize) {
    throw Error(error_number::kAutomation,
                "The workbook is too large for the .xls format, which holds at most 2 GB; convert "
                "fewer files at a time.");
  }
  const U64 padded = std::max<U64>(stream_size, compound::kMiniStreamCutoff);
  stream_sectors_ = static_cast<U32>(RoundUp(padded, kSectorSize));
  // The FAT has an entry for its own sectors and those of the DIFAT, too: a sector more of one can
  // need a sector more of the other. The numbers only grow, so that the loop ends.
  for (;;) {
    const U32 sectors = stream_sectors_ + 1 + fat_sectors_ + difat_sectors_;
    const auto fat = static_cast<U32>(RoundUp(sectors, kFatEntriesPerSector));
    const U32 outside = fat - std::min(fat, static_cast<U32>(compound::kHeaderDifatEntries));
    const auto difat = static_cast<U32>(RoundUp(outside, kFatSectorsPerDifatSector));
    if (fat == fat_sectors_ && difat == difat_sectors_) break;
    fat_sectors_ = fat;
    difat_sectors_ = difat;
  }
}

// In the order of the header's fields, whose offsets compound_file.h lists.
void CompoundFileWriter::WriteHeader() {
  out_.PutBytes(std::as_bytes(std::span(compound::kSignature)));
  out_.PutBytes(std::as_bytes(std::span(kNoClassId)));
  out_.Put(U16{0x003E}, U16{3}, U16{0xFFFE});  // versions, byte order
  out_.Put(U16{9}, U16{6});                    // shifts of sectors and mini-sectors
  out_.PutRepeated(std::byte{0}, 6);
  out_.Put(U32{0}, fat_sectors_, stream_sectors_);  // the directory follows the stream
  out_.Put(U32{0}, compound::kMiniStreamCutoff);
  out_.Put(compound::kEndOfChain, U32{0});  // no mini-FAT
  out_.Put(difat_sectors_ > 0 ? FirstDifatSector() : compound::kEndOfChain, difat_sectors_);
  for (U32 i = 0; i < compound::kHeaderDifatEntries; ++i) {
    out_.Put(i < fat_sectors_ ? FirstFatSector() + i : compound::kFreeSector);
  }
}

void CompoundFileWriter::WriteTail() {
  if (out_.Position() != compound::kHeaderSize + stream_size_) {
    throw Error(error_number::kInternal,
                "The workbook stream is not as long as was computed beforehand.");
  }
  out_.PutRepeated(std::byte{0}, U64{stream_sectors_} * kSectorSize - stream_size_);
  WriteDirectory();
  WriteFat();
  WriteDifat();
}

void CompoundFileWriter::WriteDirectory() {
  const U64 padded = std::max<U64>(stream_size_, compound::kMiniStreamCutoff);
  WriteEntry(out_, {.name = u"Root Entry",
                    .type = compound::kRootEntry,
                    .child = 1,
                    .class_id = kWorkbookClassId,
                    .first_sector = compound::kEndOfChain});
  WriteEntry(out_, {.name = u"Workbook", .type = compound::kStreamEntry, .size = padded});
  // A sector holds four entries.
  WriteEntry(out_, {});
  WriteEntry(out_, {});
}

void CompoundFileWriter::WriteFat() {
  WriteChain(out_, 0, stream_sectors_);
  out_.Put(compound::kEndOfChain);  // the directory
  for (U32 i = 0; i < fat_sectors_; ++i) out_.Put(compound::kFatSector);
  for (U32 i = 0; i < difat_sectors_; ++i) out_.Put(compound::kDifatSector);
  FillSector(out_, stream_sectors_ + 1 + fat_sectors_ + difat_sectors_);
}

void CompoundFileWriter::WriteDifat() {
  U32 next_fat = compound::kHeaderDifatEntries;
  for (U32 sector = 0; sector < difat_sectors_; ++sector) {
    for (U32 i = 0; i < kFatSectorsPerDifatSector; ++i, ++next_fat) {
      out_.Put(next_fat < fat_sectors_ ? FirstFatSector() + next_fat : compound::kFreeSector);
    }
    const bool last = sector + 1 == difat_sectors_;
    out_.Put(last ? compound::kEndOfChain : FirstDifatSector() + sector + 1);
  }
}

}  // namespace korvex
