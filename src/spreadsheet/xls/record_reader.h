// Walks the records of a workbook stream; biff_records.h has their layout.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/xls/biff_records.h"

namespace korvex {

// Goes from record to record. Stops at the end of the stream, and in front of a record that reaches
// beyond it.
class RecordReader {
 public:
  RecordReader(std::span<const std::byte> stream, std::size_t offset)
      : begin_(stream.data()),
        next_(begin_ + std::min(offset, stream.size())),
        end_(begin_ + stream.size()) {}

  // Goes to the next record; false, and no step, where there is no whole one.
  bool Next() {
    const std::size_t left = static_cast<std::size_t>(end_ - next_);
    if (left < biff::kRecordHeaderSize) return false;
    const std::size_t length = LoadU16(next_ + 2);
    if (left - biff::kRecordHeaderSize < length) return false;
    number_ = LoadU16(next_);
    data_ = next_ + biff::kRecordHeaderSize;
    next_ = data_ + length;
    return true;
  }

  // What comes after the current record, and a step over bytes of it that hold whole records. The
  // record before it stays the current one.
  std::span<const std::byte> Ahead() const { return {next_, end_}; }
  void PassTo(const std::byte* next) { next_ = next; }

  // Of the current record: valid once Next was true.
  std::uint16_t Number() const { return number_; }
  std::span<const std::byte> Data() const { return {data_, next_}; }
  // The stream from the current record's data on, for texts that go on in CONTINUE records.
  std::span<const std::byte> Rest() const { return {data_, end_}; }
  // Bytes after the current record.
  std::size_t Left() const { return static_cast<std::size_t>(end_ - next_); }
  // Where the current record begins in the stream, and where the next one does.
  std::size_t Offset() const {
    return static_cast<std::size_t>(data_ - begin_) - biff::kRecordHeaderSize;
  }
  std::size_t NextOffset() const { return static_cast<std::size_t>(next_ - begin_); }
  // The header of the next record, if the stream holds it.
  struct Header {
    std::uint16_t number;
    std::uint16_t length;
  };
  std::optional<Header> PeekHeader() const {
    if (Left() < biff::kRecordHeaderSize) return {};
    return Header{LoadU16(next_), LoadU16(next_ + 2)};
  }

 private:
  const std::byte* begin_;
  const std::byte* data_ = nullptr;
  const std::byte* next_;
  const std::byte* end_;
  std::uint16_t number_ = 0;
};

// The data of one record and of the CONTINUE records after it: one sequence of bytes in pieces,
// one for each record.
class ContinuedData {
 public:
  // `rest` is the stream from the record's data on, of which `length` bytes are the record's.
  ContinuedData(std::span<const std::byte> rest, std::size_t length)
      : at_(rest.data()), end_(at_ + length), stream_end_(at_ + rest.size()) {}

  // What is left of the current piece.
  const std::byte* At() const { return at_; }
  std::size_t Left() const { return static_cast<std::size_t>(end_ - at_); }
  void Advance(std::size_t count) { at_ += count; }

  // Goes to the next piece that is not empty, and skips the rest of the current one. False when
  // there is none.
  bool NextPiece() {
    while (stream_end_ - end_ >= static_cast<std::ptrdiff_t>(biff::kRecordHeaderSize) &&
           LoadU16(end_) == biff::kContinue) {
      const std::size_t length = LoadU16(end_ + 2);
      const std::byte* const piece = end_ + biff::kRecordHeaderSize;
      if (static_cast<std::size_t>(stream_end_ - piece) < length) break;
      at_ = piece;
      end_ = piece + length;
      if (length > 0) return true;
    }
    at_ = end_;
    return false;
  }

  // Values may lie across two pieces. False at the end of the data, and then part of the value may
  // have been taken.
  bool ReadU8(std::uint8_t& value) {
    if (at_ == end_ && !NextPiece()) return false;
    value = LoadU8(at_++);
    return true;
  }
  bool ReadU16(std::uint16_t& value) {
    std::uint8_t low, high;
    if (!ReadU8(low) || !ReadU8(high)) return false;
    value = static_cast<std::uint16_t>(low | high << 8);
    return true;
  }
  bool ReadU32(std::uint32_t& value) {
    std::uint16_t low, high;
    if (!ReadU16(low) || !ReadU16(high)) return false;
    value = low | static_cast<std::uint32_t>(high) << 16;
    return true;
  }
  // False, and all is skipped, when there are fewer bytes.
  bool Skip(std::uint64_t count) {
    while (count > Left()) {
      count -= Left();
      if (!NextPiece()) return false;
    }
    Advance(static_cast<std::size_t>(count));
    return true;
  }

 private:
  const std::byte* at_;
  const std::byte* end_;
  const std::byte* stream_end_;
};

}  // namespace korvex
