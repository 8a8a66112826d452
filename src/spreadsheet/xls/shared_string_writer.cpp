#include "spreadsheet/xls/shared_string_writer.h"
#include "spreadsheet/bytes/unicode.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "spreadsheet/bytes/byte_writer.h"
#include "spreadsheet/xls/biff_records.h"

namespace korvex {

namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;

constexpr std::size_t kStringHeaderSize = 3;
constexpr U8 kWideUnits = 1;
// An EXTSST that fits into one record has at most this many buckets.
constexpr std::size_t kMaxBuckets = 1024;
constexpr std::size_t kMinBucketStrings = 8;

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The data of SST and its CONTINUE records. They are collected record by record, because the length
// comes before the data.
template <class Out>
class StringRecords {
 public:
  explicit StringRecords(Out& out) : out_(out) {}

  // Offset of the next string from the start of its record.
  std::size_t OffsetInRecord() const { return biff::kRecordHeaderSize + used_; }

  template <typename T>
  void Put(T value) {
    std::memcpy(data_.data() + used_, &value, sizeof(T));
    used_ += sizeof(T);
  }

  // Makes sure that the next `size` bytes lie in one record.
  void KeepTogether(std::size_t size) {
    if (used_ + size > data_.size()) EndRecord();
  }

  // Fills the record and goes on in the next one after a flags byte of its own. A surrogate pair
  // stays together, because some readers decode each record by itself.
  template <typename Unit>
  void PutUnits(std::basic_string_view<Unit> units) {
    for (;;) {
      std::size_t part = std::min(units.size(), (data_.size() - used_) / sizeof(Unit));
      if constexpr (sizeof(Unit) == 2) {
        if (part > 0 && part < units.size() && IsHighSurrogate(units[part - 1])) --part;
      }
      std::memcpy(data_.data() + used_, units.data(), part * sizeof(Unit));
      used_ += part * sizeof(Unit);
      units.remove_prefix(part);
      if (units.empty()) return;
      EndRecord();
      Put(sizeof(Unit) == 2 ? kWideUnits : U8{0});
    }
  }

  void EndRecord() {
    out_.Put(number_, static_cast<U16>(used_));
    out_.PutBytes({data_.data(), used_});
    number_ = biff::kContinue;
    used_ = 0;
  }

 private:
  Out& out_;
  biff::Record number_ = biff::kSst;
  std::array<std::byte, biff::kMaxRecordData> data_;
  std::size_t used_ = 0;
};

// A text in the narrowest form that holds it: 8-bit units up to U+00FF, else 16-bit ones.
class TableString {
 public:
  explicit TableString(std::string_view utf8) {
    if (IsAscii(utf8)) {
      narrow_view_ = utf8;
      return;
    }
    ToUtf16(utf8, wide_);
    is_wide_ = std::any_of(wide_.begin(), wide_.end(), [](char16_t unit) { return unit > 0xFF; });
    if (is_wide_) return;
    std::transform(wide_.begin(), wide_.end(), std::back_inserter(narrow_),
                   [](char16_t unit) { return static_cast<char>(unit); });
    narrow_view_ = narrow_;
  }
  TableString(const TableString&) = delete;
  TableString& operator=(const TableString&) = delete;

  // Bytes that must lie in one record: the header and the first character.
  std::size_t HeadSize() const {
    constexpr std::size_t kSurrogatePair = 4;
    return kStringHeaderSize + (is_wide_ ? std::min(wide_.size() * 2, kSurrogatePair)
                                         : std::min<std::size_t>(narrow_view_.size(), 1));
  }

  template <class Out>
  void PutInto(StringRecords<Out>& records) const {
    records.Put(static_cast<U16>(is_wide_ ? wide_.size() : narrow_view_.size()));
    records.Put(is_wide_ ? kWideUnits : U8{0});
    if (is_wide_) {
      records.PutUnits(std::u16string_view(wide_));
    } else {
      records.PutUnits(narrow_view_);
    }
  }

 private:
  bool is_wide_ = false;
  std::u16string wide_;
  std::string narrow_;
  std::string_view narrow_view_;
};

// An entry of EXTSST, by which a reader finds a text without decoding those in front of it.
struct Bucket {
  U32 stream_offset;
  U16 record_offset;
};

template <class Out>
void WriteBuckets(Out& out, std::size_t strings_a_bucket, const std::vector<Bucket>& buckets) {
  out.Put(biff::kExtSst, static_cast<U16>(2 + buckets.size() * 8));
  out.Put(static_cast<U16>(strings_a_bucket));
  for (const Bucket& bucket : buckets) out.Put(bucket.stream_offset, bucket.record_offset, U16{0});
}

}  // namespace

SharedStringWriter::SharedStringWriter(const TextPool& texts)
    : texts_(texts), index_of_text_(texts.Count(), kUnused) {}

template <class Out>
void SharedStringWriter::Write(Out& out, std::uint64_t stream_start,
                               std::uint64_t references) const {
  const std::size_t count = text_of_index_.size();
  const std::size_t strings_a_bucket =
      std::max(kMinBucketStrings, (count + kMaxBuckets - 1) / kMaxBuckets);
  std::vector<Bucket> buckets;
  StringRecords<Out> records(out);
  records.Put(static_cast<U32>(references));
  records.Put(static_cast<U32>(count));
  for (std::size_t i = 0; i < count; ++i) {
    const TableString string(texts_.Text(text_of_index_[i]));
    records.KeepTogether(string.HeadSize());
    if (i % strings_a_bucket == 0) {
      const std::size_t offset = records.OffsetInRecord();
      buckets.push_back(
          {static_cast<U32>(out.Position() - stream_start + offset), static_cast<U16>(offset)});
    }
    string.PutInto(records);
  }
  records.EndRecord();
  WriteBuckets(out, strings_a_bucket, buckets);
}

template void SharedStringWriter::Write(ByteWriter&, std::uint64_t, std::uint64_t) const;
template void SharedStringWriter::Write(ByteCounter&, std::uint64_t, std::uint64_t) const;

}  // namespace korvex
