#include "spreadsheet/xls/byte_writer.h"

#include <algorithm>

#include "platform/file_system.h"

namespace korvex {

ByteWriter::ByteWriter(ReplacementFile* file) : file_(file), buffer_(kBufferSize) {}

void ByteWriter::PutBytes(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const std::size_t part = std::min(bytes.size(), kBufferSize);
    std::copy_n(bytes.data(), part, Reserve(part));
    bytes = bytes.subspan(part);
  }
}

void ByteWriter::PutRepeated(std::byte value, std::uint64_t count) {
  while (count > 0) {
    const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(count, kBufferSize));
    std::fill_n(Reserve(part), part, value);
    count -= part;
  }
}

void ByteWriter::Flush() {
  if (file_ != nullptr && used_ > 0) file_->Write({buffer_.data(), used_});
  flushed_ += used_;
  used_ = 0;
}

}  // namespace korvex
