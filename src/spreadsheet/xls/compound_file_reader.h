// Reads streams out of a compound file; compound_file.h has the layout.
//
// Damage does no harm as long as the wanted stream can still be followed: wrong counts, ids beyond
// the end, a short last sector. A chain that runs in a circle, or that two entries of the FAT lead
// into, is refused (refusal.h). No allocation is larger than the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

// Whether the bytes begin as a compound file does.
bool IsCompoundFile(std::span<const std::byte> bytes);

// Memory that one reader after the other uses.
struct CompoundBuffers {
  std::vector<std::uint32_t> fat;
  std::vector<std::uint32_t> mini_fat;
  std::vector<std::uint32_t> chain;
  std::vector<std::byte> directory;
  std::vector<std::byte> mini_stream;
};

struct CompoundStream {
  std::span<const std::byte> bytes;
  // Sectors of the stream lie beyond the end of the file.
  bool is_cut = false;
};

class CompoundFileReader {
 public:
  // Pads `file` with zeros to whole sectors. File and buffers must outlive the reader.
  CompoundFileReader(std::vector<std::byte>& file, CompoundBuffers& buffers);

  // The number of a stream's or storage's entry in the directory, or -1: in the root storage, or
  // anywhere, embedded objects included. Letter case is ignored; `name` is ASCII.
  int FindInRoot(std::string_view name) const;
  int FindAnywhere(std::string_view name) const;

  // The bytes are a part of the file itself where the sectors lie in sequence, else they are put
  // together in `storage`.
  CompoundStream Read(int index, std::vector<std::byte>& storage);

  // Whether entries may be missing because the file ends before its directory does.
  bool IsDirectoryCut() const { return is_directory_cut_; }

  // The refusal of a file that is cut: "ends after 12,288 of 40,960 bytes". The size of the whole
  // file follows from the FAT; it is "of at least" when much of the FAT itself may be missing.
  std::string CutCause() const;

 private:
  // The sector ids of a chain; `is_complete` when it ends with kEndOfChain.
  struct Chain {
    std::span<const std::uint32_t> ids;
    bool is_complete = false;
  };

  // Reading: the FAT through the DIFAT, then the directory, then the mini-stream when a stream in
  // it is first asked for.
  void LoadFat();
  void LoadFatSector(std::uint32_t id);
  std::size_t PresentSize(std::size_t id) const;
  std::uint64_t CompleteSize() const;
  void LoadDirectory();
  void LoadMiniStream();
  Chain Follow(std::uint32_t first, const std::vector<std::uint32_t>& table, std::size_t limit,
               const char* what);
  std::span<const std::byte> Join(std::span<const std::uint32_t> ids,
                                  std::span<const std::byte> area, std::size_t unit,
                                  std::vector<std::byte>& storage) const;
  void RefuseIfEntered(const Chain& chain) const;
  bool ReachesPadding(const Chain& chain, std::size_t size) const;
  std::span<const std::byte> Entry(int index) const;
  bool HasName(int index, std::string_view name) const;
  int EntryCount() const;
  std::vector<int> RootChildren() const;

  std::span<const std::byte> header_;
  std::span<const std::byte> sectors_;  // everything after the header
  std::size_t file_size_ = 0;
  std::size_t sector_size_ = 0;
  std::size_t sector_count_ = 0;
  std::uint64_t fat_capacity_ = 0;     // sectors that the FAT is made for
  std::uint32_t last_fat_sector_ = 0;  // highest id of a sector of the FAT
  bool is_fat_cut_ = false;
  bool is_directory_cut_ = false;
  bool has_mini_stream_ = false;
  bool is_mini_stream_cut_ = false;
  std::vector<int> root_children_;
  std::span<const std::byte> directory_;
  std::span<const std::byte> mini_stream_;
  CompoundBuffers& buffers_;
};

}  // namespace korvex
