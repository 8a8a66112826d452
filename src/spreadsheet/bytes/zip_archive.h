// Reads zip archives; parts are unpacked piece by piece.
//
// Refused (refusal.h) are an archive that ends before its directory, a damaged one, an encrypted
// part, a packing method that workbooks do not use (they are stored or deflated), and more unpacked
// bytes than the budget allows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/read_budget.h"

struct z_stream_s;

namespace korvex {

class ZipArchive {
 public:
  struct Part {
    std::string_view name;
    std::uint64_t header_offset;
    std::uint64_t packed_size;
    std::uint64_t size;
    std::uint32_t check_sum;
    std::uint16_t method;
    bool is_encrypted;
  };

  // Reads the directory; `bytes` must outlive the archive.
  explicit ZipArchive(std::span<const std::byte> bytes);

  std::size_t PartCount() const { return parts_.size(); }
  // Null when there is none. Folders are separated by "/". If there is no part of exactly this
  // name, letter case is ignored and "\\" counts as "/".
  const Part* Find(std::string_view name) const;
  bool Has(std::string_view name) const { return Find(name) != nullptr; }

  // The same for a part that is going to be read. Refuses when there is none, and when there is
  // more than one of the name: programs do not agree on which of them counts.
  const Part& FindOnly(std::string_view name) const;

  // The packed bytes of a part. Refuses a part that is encrypted or does not lie in the file.
  std::span<const std::byte> Packed(const Part& part) const;

 private:
  void ReadEntry(const std::byte* entry, std::size_t name_size, std::size_t extra_size);

  std::span<const std::byte> bytes_;
  std::vector<Part> parts_;
};

// Unpacks one part. Archive and budget must outlive it.
class ZipPartReader {
 public:
  // Finds the part as FindOnly does.
  ZipPartReader(const ZipArchive& archive, std::string_view name, ReadBudget& budget);
  ~ZipPartReader();

  // Fills the front of `room` and returns how many bytes; 0 at the end. Refuses a part whose size
  // or check sum turns out wrong.
  std::size_t Read(std::span<char> room);
  // Unpacks all of it at once, which is quicker. The part has a NUL behind it and is valid as long
  // as the reader. None for a large part and for one that is damaged: Read says what is wrong.
  std::optional<std::string_view> ReadWhole();

 private:
  std::size_t Unpack(std::span<char> room);
  [[noreturn]] void RefusePart(const std::string& cause) const;

  const ZipArchive::Part* part_;
  ReadBudget& budget_;
  std::span<const std::byte> left_;
  std::unique_ptr<z_stream_s> inflater_;  // of a deflated part, until its end
  std::uint64_t size_ = 0;                // so far
  std::uint32_t check_sum_ = 0;
  std::unique_ptr<char[]> whole_;
};

}  // namespace korvex
