#include "spreadsheet/bytes/zip_archive.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/bytes/refusal.h"
#include "text/text.h"

namespace korvex {
namespace {

// An archive is read from its end. The end of the directory comes after everything but a comment:
//    0  "PK\5\6"                          12  uint32  size of the directory
//    4  uint16  disk, 6 uint16 first disk  16  uint32  offset of the directory
//    8  uint16  parts on this disk         20  uint16  length of the comment
//   10  uint16  parts
// Zip64, for values that do not fit there, has a locator right in front of it:
//    0  "PK\6\7"                           8  uint64  offset of the Zip64 end of the directory:
//    0  "PK\6\6"                          40  uint64  size of the directory
//   32  uint64  parts                      48  uint64  offset of the directory
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kLongestComment = 65535;
constexpr std::size_t kLocatorSize = 20;
constexpr std::size_t kEnd64Size = 56;

// Entry of the directory:
//    0  "PK\1\2"                          28  uint16  length of the name
//    8  uint16  flags, bit 0 encrypted     30  uint16  length of the extra fields
//   10  uint16  method                     32  uint16  length of the comment
//   16  uint32  check sum                  42  uint32  offset of the part's header
//   20  uint32  packed size                46  name, extra fields, comment
//   24  uint32  size
// An extra field is uint16 id, uint16 size, data. Where a uint32 is all ones, its value is a
// uint64 in the field of Zip64.
constexpr std::size_t kEntrySize = 46;
constexpr std::uint16_t kEncryptedFlag = 1;
constexpr std::uint16_t kZip64Field = 1;
constexpr std::uint32_t kInZip64Field = 0xFFFFFFFF;

// Header of a part. It repeats the entry, except that extra fields may differ; the data follow it:
//    0  "PK\3\4", 26 uint16 length of the name, 28 uint16 length of the extra fields, 30 both
constexpr std::size_t kHeaderSize = 30;

constexpr std::uint16_t kStored = 0;
constexpr std::uint16_t kDeflated = 8;
// Sheets of plates are smaller. Of a larger part a small piece at a time is in memory, where a
// processor still holds it when it is read: the quicker unpacking of a whole would gain nothing.
constexpr std::size_t kLargestWhole = 4u << 20;
constexpr std::size_t kMostPlaces = 4;           // that a message names
constexpr std::size_t kInflaterStep = 1u << 30;  // its counts have 32 bits

struct Directory {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

std::string_view Text(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool HasSignature(std::span<const std::byte> bytes, std::uint64_t at, std::string_view signature) {
  return at <= bytes.size() && Text(bytes.subspan(at)).starts_with(signature);
}

Directory ReadEnd(std::span<const std::byte> bytes, std::size_t end) {
  if (end >= kLocatorSize && HasSignature(bytes, end - kLocatorSize, "PK\x06\x07")) {
    const std::uint64_t record = LoadU64(bytes.data() + end - kLocatorSize + 8);
    if (HasSignature(bytes, record, "PK\x06\x06") && bytes.size() - record >= kEnd64Size) {
      const std::byte* const data = bytes.data() + record;
      return {LoadU64(data + 48), LoadU64(data + 40)};
    }
  }
  const std::byte* const data = bytes.data() + end;
  return {LoadU32(data + 16), LoadU32(data + 12)};
}

// Looks backwards for the end of the directory. A signature counts only if a directory lies where
// it says: compressed data and comments can hold the same bytes.
std::optional<Directory> FindDirectory(std::span<const std::byte> bytes) {
  const std::string_view text = Text(bytes);
  const std::size_t searched = std::min(text.size(), kEndSize + kLongestComment);
  std::string_view tail = text.substr(text.size() - searched);
  std::size_t at = tail.rfind("PK\x05\x06");
  while (at != std::string_view::npos) {
    const std::size_t end = text.size() - searched + at;
    if (text.size() - end >= kEndSize) {
      const Directory found = ReadEnd(bytes, end);
      if (found.offset <= end && found.size <= end - found.offset &&
          (found.size == 0 || HasSignature(bytes, found.offset, "PK\x01\x02"))) {
        return found;
      }
    }
    tail = tail.substr(0, at);
    at = tail.rfind("PK\x05\x06");
  }
  return {};
}

// The form in which names are compared: in lower case, and with "/" where some programs write "\\".
std::string Lower(std::string_view name) {
  std::string lower(name);
  for (char& letter : lower) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter + ('a' - 'A'));
    if (letter == '\\') letter = '/';
  }
  return lower;
}

// Takes the values of an entry that are in its extra field of Zip64. The field holds only those
// that did not fit into the entry, in this order.
void ReadZip64Field(std::span<const std::byte> fields, ZipArchive::Part& part) {
  while (fields.size() >= 4) {
    const std::size_t size = std::min<std::size_t>(LoadU16(fields.data() + 2), fields.size() - 4);
    std::span<const std::byte> data = fields.subspan(4, size);
    if (LoadU16(fields.data()) == kZip64Field) {
      for (std::uint64_t* value : {&part.size, &part.packed_size, &part.header_offset}) {
        if (*value != kInZip64Field || data.size() < 8) continue;
        *value = LoadU64(data.data());
        data = data.subspan(8);
      }
    }
    fields = fields.subspan(4 + size);
  }
}

}  // namespace

ZipArchive::ZipArchive(std::span<const std::byte> bytes) : bytes_(bytes) {
  const std::optional<Directory> directory = FindDirectory(bytes);
  if (!directory) {
    Refuse("ends after " + GroupedDigits(bytes.size()) +
           " bytes, before the end of its zip archive: the rest of the file is missing");
  }
  std::span<const std::byte> left = bytes.subspan(directory->offset, directory->size);
  while (left.size() >= kEntrySize && HasSignature(left, 0, "PK\x01\x02")) {
    const std::size_t name = LoadU16(left.data() + 28);
    const std::size_t extra = LoadU16(left.data() + 30);
    const std::size_t size = kEntrySize + name + extra + LoadU16(left.data() + 32);
    if (size > left.size()) break;
    ReadEntry(left.data(), name, extra);
    left = left.subspan(size);
  }
  if (!left.empty()) {
    Refuse("is damaged: the directory of its zip archive breaks off at byte " +
           GroupedDigits(directory->offset + directory->size - left.size()));
  }
}

void ZipArchive::ReadEntry(const std::byte* entry, std::size_t name_size, std::size_t extra_size) {
  Part part;
  part.name = Text({entry + kEntrySize, name_size});
  part.header_offset = LoadU32(entry + 42);
  part.packed_size = LoadU32(entry + 20);
  part.size = LoadU32(entry + 24);
  part.check_sum = LoadU32(entry + 16);
  part.method = LoadU16(entry + 10);
  part.is_encrypted = (LoadU16(entry + 8) & kEncryptedFlag) != 0;
  ReadZip64Field({entry + kEntrySize + name_size, extra_size}, part);
  parts_.push_back(part);
}

const ZipArchive::Part* ZipArchive::Find(std::string_view name) const {
  for (const Part& part : parts_) {
    if (part.name == name) return &part;
  }
  const std::string lower = Lower(name);
  for (const Part& part : parts_) {
    if (part.name.size() == lower.size() && Lower(part.name) == lower) return &part;
  }
  return nullptr;
}

const ZipArchive::Part& ZipArchive::FindOnly(std::string_view name) const {
  const Part* const found = Find(name);
  if (found == nullptr) Refuse("is damaged: its part " + std::string(name) + " is missing");
  std::size_t count = 0;
  std::string places;
  for (const Part& part : parts_) {
    if (part.name != found->name) continue;
    if (++count <= kMostPlaces) {
      places += (count > 1 ? ", " : "") + GroupedDigits(part.header_offset);
    }
  }
  if (count == 1) return *found;
  if (count > kMostPlaces) places += " …";
  Refuse("is damaged: its zip archive has " + GroupedDigits(count) + " parts named " +
         std::string(found->name) + ", at bytes " + places);
}

std::span<const std::byte> ZipArchive::Packed(const Part& part) const {
  if (part.is_encrypted) Refuse("needs a password: the parts of its zip archive are encrypted");
  const std::uint64_t header = part.header_offset;
  if (HasSignature(bytes_, header, "PK\x03\x04") && bytes_.size() - header >= kHeaderSize) {
    const std::byte* const at = bytes_.data() + header;
    const std::uint64_t begin =
        header + kHeaderSize + LoadU16(at + 26) + std::uint64_t{LoadU16(at + 28)};
    if (begin <= bytes_.size() && part.packed_size <= bytes_.size() - begin) {
      return bytes_.subspan(begin, part.packed_size);
    }
  }
  Refuse("is damaged: its part " + std::string(part.name) +
         " does not lie where the directory of " + "its zip archive says");
}

ZipPartReader::ZipPartReader(const ZipArchive& archive, std::string_view name, ReadBudget& budget)
    : part_(&archive.FindOnly(name)), budget_(budget), left_(archive.Packed(*part_)) {
  if (part_->method == kStored) return;
  if (part_->method != kDeflated) {
    RefusePart("is packed by method " + std::to_string(part_->method) +
               ", which workbooks do not use");
  }
  inflater_ = std::make_unique<z_stream>();
  if (inflateInit2(inflater_.get(), -MAX_WBITS) != Z_OK) throw std::bad_alloc();
}

ZipPartReader::~ZipPartReader() {
  if (inflater_) inflateEnd(inflater_.get());
}

// Size and check sum are known only at the end: until then a caller works with bytes that may turn
// out damaged, and drops what it made of them when this throws.
std::size_t ZipPartReader::Read(std::span<char> room) {
  const std::size_t count = Unpack(room);
  budget_.AddUnpacked(count);
  size_ += count;
  check_sum_ = static_cast<std::uint32_t>(libdeflate_crc32(check_sum_, room.data(), count));
  if (count == 0 && (size_ != part_->size || check_sum_ != part_->check_sum)) {
    RefusePart("does not have the check sum that it should have");
  }
  return count;
}

// A part that turns out to be damaged counts only when it is read again, piece by piece.
std::optional<std::string_view> ZipPartReader::ReadWhole() {
  if (part_->size > kLargestWhole || !budget_.Allows(part_->size)) return {};
  const auto size = static_cast<std::size_t>(part_->size);
  if (part_->method == kStored && left_.size() != size) return {};
  whole_ = std::make_unique_for_overwrite<char[]>(size + 1);
  whole_[size] = '\0';
  if (part_->method == kStored) {
    if (size > 0) std::memcpy(whole_.get(), left_.data(), size);
  } else {
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> inflater(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    if (inflater == nullptr) throw std::bad_alloc();
    const libdeflate_result result = libdeflate_deflate_decompress(
        inflater.get(), left_.data(), left_.size(), whole_.get(), size, nullptr);
    if (result != LIBDEFLATE_SUCCESS) return {};
  }
  if (libdeflate_crc32(0, whole_.get(), size) != part_->check_sum) return {};
  budget_.AddUnpacked(size);
  return std::string_view(whole_.get(), size);
}

std::size_t ZipPartReader::Unpack(std::span<char> room) {
  if (part_->method == kStored) {
    const std::size_t count = std::min(room.size(), left_.size());
    if (count > 0) std::memcpy(room.data(), left_.data(), count);
    left_ = left_.subspan(count);
    return count;
  }
  if (!inflater_) return 0;
  z_stream& inflater = *inflater_;
  inflater.next_out = reinterpret_cast<Bytef*>(room.data());
  inflater.avail_out = static_cast<uInt>(std::min(room.size(), kInflaterStep));
  int state = Z_OK;
  while (state == Z_OK && inflater.avail_out > 0) {
    const std::size_t step = std::min(left_.size(), kInflaterStep);
    inflater.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(left_.data()));
    inflater.avail_in = static_cast<uInt>(step);
    state = inflate(&inflater, Z_NO_FLUSH);
    left_ = left_.subspan(step - inflater.avail_in);
  }
  const std::size_t count = room.size() - inflater.avail_out;
  if (state == Z_STREAM_END) {
    inflateEnd(&inflater);
    inflater_.reset();
  } else if (state != Z_OK) {
    RefusePart("cannot be unpacked behind byte " + GroupedDigits(size_ + count));
  }
  return count;
}

void ZipPartReader::RefusePart(const std::string& cause) const {
  Refuse("is damaged: its part " + std::string(part_->name) + " " + cause);
}

}  // namespace korvex
