// Writes a compound file of version 3 that holds one stream, "Workbook".
//
//   header | stream | directory (one sector) | FAT | DIFAT
//
// The size of the stream is known beforehand and fixes the whole layout, so that the file is
// written from front to back and never held in memory. A stream below the cutoff of 4,096 bytes is
// padded with zeros up to it and so needs no mini-stream. There are no time stamps: the same stream
// gives the same file.
#pragma once

#include <cstdint>

namespace korvex {

class ByteWriter;

class CompoundFileWriter {
 public:
  // `out` must be at its beginning and outlive the writer. Error 1004 when the stream is longer
  // than the 2 GiB that a version 3 file can hold.
  CompoundFileWriter(ByteWriter& out, std::uint64_t stream_size);

  void WriteHeader();
  // Everything after the stream. Error 51 when `out` did not take exactly `stream_size` bytes
  // after the header.
  void WriteTail();

 private:
  void WriteDirectory();
  void WriteFat();
  void WriteDifat();
  std::uint32_t FirstFatSector() const { return stream_sectors_ + 1; }
  std::uint32_t FirstDifatSector() const { return FirstFatSector() + fat_sectors_; }

  ByteWriter& out_;
  std::uint64_t stream_size_;
  std::uint32_t stream_sectors_;
  std::uint32_t fat_sectors_ = 0;
  std::uint32_t difat_sectors_ = 0;
};

}  // namespace korvex
