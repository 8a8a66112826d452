// Writes a zip archive from front to back, straight into its file: nothing is read back or changed
// afterwards, so that an archive of any size takes the same little memory.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/byte_writer.h"

namespace korvex {

// All parts are deflated and have the same time stamp: equal parts give equal bytes. Names are
// ASCII. The parts can come from different threads, one call after the other. Errors of the file
// pass through, after which the writer can only be destroyed.
class ZipWriter {
 public:
  // `file` must outlive the writer.
  explicit ZipWriter(ReplacementFile& file);
  ~ZipWriter() { deflateEnd(&deflater_); }
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  // A small part, all at once. Its sizes stand in front of it.
  void AddPart(std::string_view name, std::string_view content);
  // A part whose bytes come piece by piece, of which there are `most` at most. Its sizes stand
  // behind it, in the form of Zip64 only when `most` asks for that: not every program reads it.
  void BeginPart(std::string_view name, std::uint64_t most);
  void Write(std::string_view bytes);
  void EndPart();
  // The directory. Nothing is written afterwards.
  void Finish();

 private:
  struct Part {
    std::string name;
    std::uint64_t offset = 0;  // of its header
    bool is_zip64 = false;     // its sizes have 64 bits
    bool is_streamed = false;  // its sizes stand behind it
    std::uint32_t check_sum = 0;
    std::uint64_t packed_size = 0;
    std::uint64_t size = 0;
  };

  Part& NewPart(std::string_view name);
  // Deflates into `packed`, or where that is null into the file.
  void Deflate(std::string_view bytes, int flush, std::string* packed);
  void PutHeader(const Part& part);
  void PutEntry(const Part& part);
  void PutEnd(std::uint64_t directory);

  ByteWriter out_;
  z_stream deflater_{};
  std::vector<std::byte> packed_;  // what the deflater puts out at once
  std::vector<Part> parts_;        // the last one is being written
};

}  // namespace korvex
