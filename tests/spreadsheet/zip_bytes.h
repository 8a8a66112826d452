// Builds zip archives in memory, and relationships of .xlsx workbooks, for the tests and for the
// fuzzers: a fuzzer would hardly ever hit a right check sum by itself.
#pragma once

#include <zlib.h>

#include <string>
#include <utility>
#include <vector>

namespace korvex::test {

using ZipParts = std::vector<std::pair<std::string, std::string>>;  // names and contents

// A number of `size` bytes, little-endian.
inline std::string ZipNumber(std::size_t value, int size) {
  std::string bytes;
  for (; size > 0; --size, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  return bytes;
}

inline std::string Deflated(const std::string& content) {
  z_stream packer{};
  deflateInit2(&packer, 9, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&packer, static_cast<uLong>(content.size())), '\0');
  packer.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
  packer.avail_in = static_cast<uInt>(content.size());
  packer.next_out = reinterpret_cast<Bytef*>(packed.data());
  packer.avail_out = static_cast<uInt>(packed.size());
  deflate(&packer, Z_FINISH);
  packed.resize(packer.total_out);
  deflateEnd(&packer);
  return packed;
}

inline std::string Zip(const ZipParts& parts) {
  std::string archive, directory;
  for (const auto& [name, content] : parts) {
    const std::string packed = Deflated(content);
    const auto sum = crc32_z(0, reinterpret_cast<const Bytef*>(content.data()), content.size());
    // Version, flags, method, time and date; check sum, sizes, lengths of name and extra fields.
    const std::string common = ZipNumber(20, 2) + ZipNumber(0, 2) + ZipNumber(8, 2) +
                               ZipNumber(0, 4) + ZipNumber(sum, 4) + ZipNumber(packed.size(), 4) +
                               ZipNumber(content.size(), 4) + ZipNumber(name.size(), 4);
    directory += "PK\1\2" + ZipNumber(20, 2) + common + ZipNumber(0, 10) +
                 ZipNumber(archive.size(), 4) + name;
    archive += "PK\3\4" + common + name + packed;
  }
  return archive + directory + "PK\5\6" + ZipNumber(0, 4) + ZipNumber(parts.size(), 2) +
         ZipNumber(parts.size(), 2) + ZipNumber(directory.size(), 4) +
         ZipNumber(archive.size(), 4) + ZipNumber(0, 2);
}

inline const std::string kXlsxRelations =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

inline std::string Relationship(const std::string& id, const std::string& kind,
                                const std::string& part) {
  return "<Relationship Id=\"" + id + "\" Type=\"" + kXlsxRelations + '/' + kind + "\" Target=\"" +
         part + "\"/>";
}

inline std::string Relationships(const std::string& list) {
  return "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" +
         list + "</Relationships>";
}

}  // namespace korvex::test
