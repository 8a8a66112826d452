// Writes little-endian values into a file, buffered.
//
// Code that writes into a ByteCounter instead only counts. A first pass over the same code thereby
// learns the sizes that headers need in the second.
#pragma once

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

#include "platform/file_system.h"

namespace korvex {

// Values that are as wide in the file as in memory. A plain int is none: its width is not a
// format's.
template <typename T>
concept FixedWidth = std::unsigned_integral<T> || std::same_as<T, double> || std::is_enum_v<T>;

class ByteWriter {
 public:
  // `file` must outlive the writer. Call Flush at the end: the destructor drops what is still
  // buffered.
  explicit ByteWriter(ReplacementFile& file) : file_(file), buffer_(kBufferSize) {}
  ByteWriter(const ByteWriter&) = delete;
  ByteWriter& operator=(const ByteWriter&) = delete;

  // Bytes taken so far.
  std::uint64_t Position() const { return flushed_ + used_; }

  template <FixedWidth... T>
  void Put(T... values) {
    static_assert(std::endian::native == std::endian::little);
    std::byte* at = Reserve((sizeof(T) + ... + 0));
    ((std::memcpy(at, &values, sizeof(T)), at += sizeof(T)), ...);
  }

  // A whole BIFF record: its number, its length, which is the fields' own, and the fields.
  template <class Record, FixedWidth... T>
  requires(std::is_enum_v<Record> && sizeof(Record) == 2) void PutRecord(Record number,
                                                                         T... fields) {
    Put(number, static_cast<std::uint16_t>((sizeof(T) + ... + 0)), fields...);
  }

  // Both take any number of bytes, also more than the buffer holds.
  void PutBytes(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
      const std::size_t part = std::min(bytes.size(), kBufferSize);
      std::copy_n(bytes.data(), part, Reserve(part));
      bytes = bytes.subspan(part);
    }
  }
  void PutRepeated(std::byte value, std::uint64_t count) {
    while (count > 0) {
      const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(count, kBufferSize));
      std::fill_n(Reserve(part), part, value);
      count -= part;
    }
  }
  // Errors of the file pass through.
  void Flush() {
    if (used_ > 0) file_.Write({buffer_.data(), used_});
    flushed_ += used_;
    used_ = 0;
  }

 private:
  static constexpr std::size_t kBufferSize = 64 * 1024;

  std::byte* Reserve(std::size_t size) {
    if (used_ + size > kBufferSize) Flush();
    std::byte* at = buffer_.data() + used_;
    used_ += size;
    return at;
  }

  ReplacementFile& file_;
  std::vector<std::byte> buffer_;
  std::size_t used_ = 0;
  std::uint64_t flushed_ = 0;
};

// Takes what a ByteWriter takes.
class ByteCounter {
 public:
  std::uint64_t Position() const { return count_; }

  template <FixedWidth... T>
  void Put(T...) {
    count_ += (sizeof(T) + ... + 0);
  }
  template <class Record, FixedWidth... T>
  void PutRecord(Record, T...) {
    count_ += (sizeof(T) + ... + (2 * sizeof(std::uint16_t)));
  }
  void PutBytes(std::span<const std::byte> bytes) { count_ += bytes.size(); }
  void PutRepeated(std::byte, std::uint64_t count) { count_ += count; }

 private:
  std::uint64_t count_ = 0;
};

}  // namespace korvex
