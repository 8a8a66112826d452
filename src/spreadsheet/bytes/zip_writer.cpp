#include "spreadsheet/bytes/zip_writer.h"

#include <algorithm>
#include <limits>
#include <span>

#include "platform/error.h"

namespace korvex {
namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

// The fields of Zip64 are for what does not fit into those of 32 bits, whose value is all ones
// then.
constexpr U32 kInZip64 = std::numeric_limits<U32>::max();
constexpr U16 kManyParts = std::numeric_limits<U16>::max();
constexpr U16 kZip64Field = 1;
// What cannot be packed grows by less than a thousandth.
constexpr U64 kLargestPart = kInZip64 - kInZip64 / 1000;

constexpr U16 kVersion = 20;  // that can read an archive, times ten
constexpr U16 kZip64Version = 45;
constexpr U16 kSizesBehind = 8;  // a flag
constexpr U16 kDeflated = 8;
constexpr U16 kTime = 0;  // 1980-01-01 00:00, the first that there is
constexpr U16 kDate = 1 << 5 | 1;

// The quickest level. Packing takes longer than making what is packed; zlib's usual level takes
// three times as long and makes workbooks a fifth smaller.
constexpr int kLevel = 1;
constexpr int kMemoryLevel = 9;
constexpr std::size_t kPackedAtOnce = 64 * 1024;
constexpr std::size_t kMostAtOnce = 1u << 30;  // the deflater counts in 32 bits

constexpr U32 Signature(char first, char second) {
  return U32{'P'} | U32{'K'} << 8 | static_cast<U32>(first) << 16 | static_cast<U32>(second) << 24;
}

U32 Fitting(U64 value) {
  return static_cast<U32>(std::min<U64>(value, kInZip64));
}

std::span<const std::byte> Bytes(std::string_view text) {
  return std::as_bytes(std::span(text));
}

Bytef* ZlibBytes(const void* bytes) {
  return static_cast<Bytef*>(const_cast<void*>(bytes));
}

}  // namespace

ZipWriter::ZipWriter(ReplacementFile& file) : out_(file), packed_(kPackedAtOnce) {
  // Negative: without the header and the check sum of zlib's own format.
  if (deflateInit2(&deflater_, kLevel, Z_DEFLATED, -MAX_WBITS, kMemoryLevel, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    throw Error(error_number::kOutOfMemory);
  }
}

void ZipWriter::AddPart(std::string_view name, std::string_view content) {
  Part& part = NewPart(name);
  std::string packed;
  Deflate(content, Z_FINISH, &packed);
  part.packed_size = packed.size();
  PutHeader(part);
  out_.PutBytes(Bytes(packed));
}

void ZipWriter::BeginPart(std::string_view name, std::uint64_t most) {
  Part& part = NewPart(name);
  part.is_streamed = true;
  part.is_zip64 = most > kLargestPart;
  PutHeader(part);
}

void ZipWriter::Write(std::string_view bytes) {
  Deflate(bytes, Z_NO_FLUSH, nullptr);
}

// Behind a streamed part: 0 "PK\7\8", 4 uint32 check sum, 8 packed size, 12 size; in Zip64 the
// sizes are uint64.
void ZipWriter::EndPart() {
  Deflate({}, Z_FINISH, nullptr);
  const Part& part = parts_.back();
  out_.Put(Signature(7, 8), part.check_sum);
  if (part.is_zip64) {
    out_.Put(part.packed_size, part.size);
  } else {
    out_.Put(Fitting(part.packed_size), Fitting(part.size));
  }
}

void ZipWriter::Finish() {
  const U64 directory = out_.Position();
  for (const Part& part : parts_) PutEntry(part);
  PutEnd(directory);
  out_.Flush();
}

ZipWriter::Part& ZipWriter::NewPart(std::string_view name) {
  deflateReset(&deflater_);
  Part& part = parts_.emplace_back();
  part.name = name;
  part.offset = out_.Position();
  return part;
}

void ZipWriter::Deflate(std::string_view bytes, int flush, std::string* packed) {
  Part& part = parts_.back();
  do {
    const std::string_view now = bytes.substr(0, kMostAtOnce);
    bytes.remove_prefix(now.size());
    part.size += now.size();
    deflater_.next_in = ZlibBytes(now.data());
    deflater_.avail_in = static_cast<uInt>(now.size());
    // Of no bytes it would be that of an empty part.
    if (!now.empty()) {
      part.check_sum =
          static_cast<U32>(crc32(part.check_sum, deflater_.next_in, deflater_.avail_in));
    }
    do {
      deflater_.next_out = ZlibBytes(packed_.data());
      deflater_.avail_out = static_cast<uInt>(packed_.size());
      deflate(&deflater_, bytes.empty() ? flush : Z_NO_FLUSH);
      const std::size_t count = packed_.size() - deflater_.avail_out;
      if (packed != nullptr) {
        packed->append(reinterpret_cast<const char*>(packed_.data()), count);
      } else {
        out_.PutBytes(std::span(packed_).first(count));
        part.packed_size += count;
      }
    } while (deflater_.avail_out == 0);  // until it has no more to put out
  } while (!bytes.empty());
}

// In front of a part:
//    0  "PK\3\4"                          14  uint32  check sum
//    4  uint16  version                   18  uint32  packed size
//    6  uint16  flags                     22  uint32  size
//    8  uint16  method                    26  uint16  length of the name
//   10  uint16  time, 12 uint16 date      28  uint16  length of the extra fields
//   30  name, extra fields
// What stands behind a part is 0 here. A field of Zip64, also of zeros, says that the sizes behind
// the part have 64 bits.
void ZipWriter::PutHeader(const Part& part) {
  out_.Put(Signature(3, 4), part.is_zip64 ? kZip64Version : kVersion,
           part.is_streamed ? kSizesBehind : U16{0}, kDeflated, kTime, kDate, part.check_sum);
  if (part.is_zip64) {
    out_.Put(kInZip64, kInZip64);
  } else {
    out_.Put(Fitting(part.packed_size), Fitting(part.size));
  }
  out_.Put(static_cast<U16>(part.name.size()), static_cast<U16>(part.is_zip64 ? 20 : 0));
  out_.PutBytes(Bytes(part.name));
  if (part.is_zip64) out_.Put(kZip64Field, U16{16}, U64{0}, U64{0});
}

// In the directory:
//    0  "PK\1\2"                          28  uint16  length of the name
//    4  uint16  version of the writer     30  uint16  length of the extra fields
//    6  to 28 as in front of the part     32  uint16  length of the comment
//      from 4 on                          34  uint16  disk, 36 uint16 and 38 uint32 attributes
//   42  uint32  offset of the header      46  name, extra fields
void ZipWriter::PutEntry(const Part& part) {
  const bool has_far_offset = part.offset >= kInZip64;
  const int values = (part.is_zip64 ? 2 : 0) + (has_far_offset ? 1 : 0);
  const U16 version = values > 0 ? kZip64Version : kVersion;
  out_.Put(Signature(1, 2), version, version, part.is_streamed ? kSizesBehind : U16{0}, kDeflated,
           kTime, kDate, part.check_sum);
  if (part.is_zip64) {
    out_.Put(kInZip64, kInZip64);
  } else {
    out_.Put(Fitting(part.packed_size), Fitting(part.size));
  }
  out_.Put(static_cast<U16>(part.name.size()), static_cast<U16>(values > 0 ? 4 + 8 * values : 0),
           U16{0}, U16{0}, U16{0}, U32{0}, Fitting(part.offset));
  out_.PutBytes(Bytes(part.name));
  if (values > 0) out_.Put(kZip64Field, static_cast<U16>(8 * values));
  if (part.is_zip64) out_.Put(part.size, part.packed_size);
  if (has_far_offset) out_.Put(part.offset);
}

// The end of the directory, for an archive of Zip64 once more with longer numbers in front of it:
//    0  "PK\5\6"                           0  "PK\6\6"
//    4  uint16  disk                       4  uint64  bytes from 12 on
//    6  uint16  disk of the directory     12  uint16  version of the writer, 14 uint16 version
//    8  uint16  parts on this disk        16  uint32  disk, 20 uint32 disk of the directory
//   10  uint16  parts                     24  uint64  parts on this disk, 32 uint64 parts
//   12  uint32  size of the directory     40  uint64  size of the directory
//   16  uint32  its offset                48  uint64  its offset
//   20  uint16  length of the comment
// Between the two: 0 "PK\6\7", 4 uint32 disk, 8 uint64 offset of "PK\6\6", 16 uint32 disks.
void ZipWriter::PutEnd(std::uint64_t directory) {
  const U64 size = out_.Position() - directory;
  const U64 end = out_.Position();
  const U64 parts = parts_.size();
  if (parts >= kManyParts || directory >= kInZip64 || size >= kInZip64) {
    out_.Put(Signature(6, 6), U64{44}, kZip64Version, kZip64Version, U32{0}, U32{0}, parts, parts,
             size, directory);
    out_.Put(Signature(6, 7), U32{0}, end, U32{1});
  }
  const auto count = static_cast<U16>(std::min<U64>(parts, kManyParts));
  out_.Put(Signature(5, 6), U16{0}, U16{0}, count, count, Fitting(size), Fitting(directory),
           U16{0});
}

}  // namespace korvex
