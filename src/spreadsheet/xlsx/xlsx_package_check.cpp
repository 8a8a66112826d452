#include "spreadsheet/xlsx/xlsx_writer.h"

#include <zlib.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <string_view>

#include "spreadsheet/bytes/little_endian.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr std::string_view kRowsStart = "<sheetData>";
constexpr std::string_view kRowsEnd = "</sheetData>";
constexpr std::size_t kTail = 4096;  // longer than what follows the rows of a sheet

// As much of a part as the checks need: a sheet of a million rows is not held in memory.
struct Part {
  std::string name;
  std::string head;  // as far as the rows of a sheet, or all of it
  std::string tail;
  std::uint64_t size = 0;

  void Append(std::string_view bytes) {
    if (head.find(kRowsStart) == std::string::npos) head.append(bytes);
    tail.append(bytes);
    if (tail.size() > kTail) tail.erase(0, tail.size() - kTail);
    size += bytes.size();
  }
};

// Reads the parts of a package from front to back. In front of each part:
//    0  "PK\3\4"                   28  uint16  length of the extra fields
//   14  uint32  check sum          30  name, extra fields, then the deflated data
//   26  uint16  length of the name
// Deflated data mark their own end. After the last part is the directory, "PK\1\2".
class PackageReader {
 public:
  explicit PackageReader(std::FILE* file) : file_(file) { inflateInit2(&inflater_, -MAX_WBITS); }
  ~PackageReader() { inflateEnd(&inflater_); }
  PackageReader(const PackageReader&) = delete;
  PackageReader& operator=(const PackageReader&) = delete;

  // False for a damaged part, and at the directory.
  bool Read(Part& part) {
    const std::string header = Take(30);
    is_at_directory_ = header.starts_with("PK\x01\x02");
    if (header.size() < 30 || !header.starts_with("PK\x03\x04")) return false;
    const auto* const fields = reinterpret_cast<const std::byte*>(header.data());
    part = {};
    part.name = Take(LoadU16(fields + 26));
    Take(LoadU16(fields + 28));
    return Unpack(part) == LoadU32(fields + 14);
  }
  bool IsAtDirectory() const { return is_at_directory_; }

 private:
  bool Fill() {
    inflater_.next_in = input_.data();
    inflater_.avail_in = static_cast<uInt>(std::fread(input_.data(), 1, input_.size(), file_));
    return inflater_.avail_in > 0;
  }

  // The next bytes, fewer at the end of the file.
  std::string Take(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count && (inflater_.avail_in > 0 || Fill())) {
      bytes.push_back(static_cast<char>(*inflater_.next_in++));
      --inflater_.avail_in;
    }
    return bytes;
  }

  // Returns the check sum of the unpacked data, or a number larger than any for damaged data.
  std::uint64_t Unpack(Part& part) {
    uLong sum = crc32(0, nullptr, 0);
    inflateReset(&inflater_);
    int result = Z_OK;
    while (result == Z_OK && (inflater_.avail_in > 0 || Fill())) {
      inflater_.next_out = output_.data();
      inflater_.avail_out = static_cast<uInt>(output_.size());
      result = inflate(&inflater_, Z_NO_FLUSH);
      const std::size_t count = output_.size() - inflater_.avail_out;
      sum = crc32(sum, output_.data(), static_cast<uInt>(count));
      part.Append({reinterpret_cast<const char*>(output_.data()), count});
    }
    return result == Z_STREAM_END ? sum : std::uint64_t{1} << 32;
  }

  std::FILE* file_;
  z_stream inflater_{};
  std::array<Bytef, 64 * 1024> input_;
  std::array<Bytef, 64 * 1024> output_;
  bool is_at_directory_ = false;
};

// Whether the part ends with the end tag of its root element.
bool HasItsEnd(const Part& part) {
  std::size_t start = part.head.find("?>");
  if (start != std::string::npos) start = part.head.find('<', start);
  if (start == std::string::npos) return false;
  const std::size_t end = part.head.find_first_of(" />", start);
  if (end == std::string::npos) return false;
  return TrimBlanks(part.tail, "\n")
      .ends_with("</" + part.head.substr(start + 1, end - start - 1) + ">");
}

// The bytes between <sheetData> and </sheetData>.
std::uint64_t RowBytes(const Part& part) {
  const std::size_t start = part.head.find(kRowsStart);
  const std::size_t end = part.tail.rfind(kRowsEnd);
  if (start == std::string::npos || end == std::string::npos) return 0;
  return part.size - (part.tail.size() - end) - (start + kRowsStart.size());
}

}  // namespace

bool IsWholeXlsx(const std::string& path, const std::vector<std::uint64_t>& row_bytes) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  if (file == nullptr) return false;
  std::map<std::string, std::uint64_t> sheets;
  for (const std::uint64_t bytes : row_bytes) {
    sheets["xl/worksheets/sheet" + std::to_string(sheets.size() + 1) + ".xml"] = bytes;
  }
  const auto package = std::make_unique<PackageReader>(file.get());
  for (Part part; package->Read(part);) {
    if (!HasItsEnd(part)) return false;
    const auto sheet = sheets.find(part.name);
    if (sheet == sheets.end()) continue;
    if (RowBytes(part) != sheet->second) return false;
    sheets.erase(sheet);
  }
  return sheets.empty() && package->IsAtDirectory();
}

}  // namespace korvex
