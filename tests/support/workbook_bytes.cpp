#include "tests/support/workbook_bytes.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <iterator>

namespace korvex::test {
namespace {

constexpr std::uint32_t kEnd = 0xFFFFFFFE;
constexpr std::uint32_t kFree = 0xFFFFFFFF;

Bytes Padded(Bytes bytes, std::size_t unit) {
  bytes.resize((bytes.size() + unit - 1) / unit * unit);
  return bytes;
}

Bytes Entry(std::string_view name, unsigned type, std::uint32_t child, std::uint32_t first,
            std::size_t size) {
  Bytes entry;
  for (const char letter : name) entry += U16(static_cast<unsigned char>(letter));
  entry.resize(64);
  entry += U16(static_cast<unsigned>(2 * name.size() + 2)) + U8(type) + U8(1);
  entry += U32(kFree) + U32(kFree) + U32(child);
  entry.resize(116);
  return entry + U32(first) + U32(static_cast<std::uint32_t>(size)) + U32(0);
}

// Chains `count` entries of a FAT from `first` on, upwards or downwards.
void Chain(std::vector<std::uint32_t>& fat, std::size_t first, std::size_t count, bool is_down) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = first + (is_down ? count - 1 - i : i);
    fat[at] = i + 1 == count ? kEnd : static_cast<std::uint32_t>(is_down ? at - 1 : at + 1);
  }
}

}  // namespace

Bytes DataFile(const std::string& name) {
  std::ifstream file(TEST_DATA "/" + name, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

Bytes U8(unsigned value) {
  return Bytes(1, static_cast<char>(value));
}
Bytes U16(unsigned value) {
  return U8(value) + U8(value >> 8);
}
Bytes U32(std::uint32_t value) {
  return U16(value) + U16(value >> 16);
}
Bytes F64(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return U32(static_cast<std::uint32_t>(bits)) + U32(static_cast<std::uint32_t>(bits >> 32));
}

void PutU16(Bytes& bytes, std::size_t offset, unsigned value) {
  bytes.replace(offset, 2, U16(value));
}
void PutU32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
  bytes.replace(offset, 4, U32(value));
}

Bytes Record(unsigned number, const Bytes& data) {
  return U16(number) + U16(static_cast<unsigned>(data.size())) + data;
}

Bytes NarrowText(std::string_view latin1) {
  return U16(static_cast<unsigned>(latin1.size())) + U8(0) + Bytes(latin1);
}

Bytes WideText(std::u16string_view text) {
  Bytes bytes = U16(static_cast<unsigned>(text.size())) + U8(1);
  for (const char16_t unit : text) bytes += U16(unit);
  return bytes;
}

Bytes ByteText(std::string_view text) {
  return U16(static_cast<unsigned>(text.size())) + Bytes(text);
}

Bytes CellHead(unsigned row, unsigned column, unsigned xf) {
  return U16(row) + U16(column) + U16(xf);
}

Bytes NumberCell(unsigned row, unsigned column, double value, unsigned xf) {
  return Record(0x0203, CellHead(row, column, xf) + F64(value));
}

Bytes StringTable(const std::vector<Bytes>& texts) {
  const auto count = static_cast<std::uint32_t>(texts.size());
  Bytes data = U32(count) + U32(count);
  for (const Bytes& text : texts) data += text;
  return Record(0x00FC, data);
}

Bytes StreamBytes::Build() const {
  Bytes stream = Record(0x0809, U16(version) + U16(5) + U32(0)) + globals;
  std::vector<std::size_t> offset_places;
  for (const SheetBytes& sheet : sheets) {
    offset_places.push_back(stream.size() + 4);
    Bytes name = U8(static_cast<unsigned>(sheet.name.size()));
    if (version == 0x0600) name += U8(0);
    stream += Record(0x0085, U32(0) + U8(sheet.state) + U8(sheet.kind) + name + sheet.name);
  }
  stream += Record(0x000A);
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    PutU32(stream, offset_places[i], static_cast<std::uint32_t>(stream.size()));
    stream += Record(0x0809, U16(version) + U16(sheets[i].kind == 2 ? 0x20 : 0x10) + U32(0));
    stream += sheets[i].records + Record(0x000A);
  }
  return stream;
}

Bytes OneSheet(const Bytes& sheet_records, const Bytes& globals, unsigned version) {
  return StreamBytes{version, globals, {{.records = sheet_records}}}.Build();
}

Bytes CompoundBytes::Build() const {
  const std::size_t unit = std::size_t{1} << sector_shift;
  const std::size_t ids = unit / 4;
  const bool is_mini = stream.size() < 4096;
  const std::size_t piece = is_mini ? 64 : unit;
  const Bytes padded = Padded(stream, piece);
  Bytes content;
  for (std::size_t at = 0; at < padded.size(); at += piece) {
    content += padded.substr(is_scattered ? padded.size() - piece - at : at, piece);
  }
  content = Padded(content, unit);

  const std::size_t fat_count = (2 + content.size() / unit) / (ids - 1) + 1;
  const auto directory = static_cast<std::uint32_t>(fat_count);
  const std::uint32_t data = directory + (is_mini ? 2 : 1);
  std::vector<std::uint32_t> fat(fat_count * ids, kFree);
  std::fill_n(fat.begin(), fat_count, 0xFFFFFFFD);
  fat[directory] = fat[data - 1] = kEnd;
  Chain(fat, data, content.size() / unit, is_scattered && !is_mini);
  std::vector<std::uint32_t> mini_fat(is_mini ? ids : 0, kFree);
  if (is_mini) Chain(mini_fat, 0, padded.size() / piece, is_scattered);

  Bytes file("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  file.resize(24);
  file += U16(0x3E) + U16(sector_shift == 9 ? 3 : 4) + U16(0xFFFE) + U16(sector_shift) + U16(6);
  file.resize(44);
  file += U32(directory) + U32(directory) + U32(0) + U32(4096);
  file += U32(is_mini ? directory + 1 : kEnd) + U32(is_mini ? 1 : 0) + U32(kEnd) + U32(0);
  for (std::uint32_t id = 0; id < 109; ++id) file += U32(id < fat_count ? id : kFree);
  file.resize(unit);
  for (const std::uint32_t id : fat) file += U32(id);
  const auto last = static_cast<std::uint32_t>(padded.size() / piece - 1);
  const std::uint32_t first = (is_mini ? 0 : data) + (is_scattered ? last : 0);
  file += Entry("Root Entry", 5, 1, is_mini ? data : kEnd, is_mini ? padded.size() : 0);
  file += Entry(stream_name, 2, kFree, first, stream.size());
  file = Padded(file, unit);
  for (const std::uint32_t id : mini_fat) file += U32(id);
  return file + content;
}

CompoundBytes LargeWorkbook(const Bytes& sheet_records, const Bytes& globals) {
  // A record that no reader knows, between the globals.
  return {.stream = OneSheet(sheet_records, globals + Record(0x0FFF, Bytes(4096, 'x')))};
}

}  // namespace korvex::test
