// Builds zip archives and .xlsx workbooks in memory.
#pragma once

#include <zlib.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/workbook_bytes.h"

namespace korvex::test {

using ZipParts = std::vector<std::pair<std::string, Bytes>>;  // names and contents

inline Bytes Deflated(const Bytes& content) {
  z_stream packer{};
  deflateInit2(&packer, 9, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
  Bytes packed(deflateBound(&packer, static_cast<uLong>(content.size())), '\0');
  packer.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
  packer.avail_in = static_cast<uInt>(content.size());
  packer.next_out = reinterpret_cast<Bytef*>(packed.data());
  packer.avail_out = static_cast<uInt>(packed.size());
  deflate(&packer, Z_FINISH);
  packed.resize(packer.total_out);
  deflateEnd(&packer);
  return packed;
}

inline Bytes Zip(const ZipParts& parts) {
  Bytes archive, directory;
  for (const auto& [name, content] : parts) {
    const Bytes packed = Deflated(content);
    const auto sum = static_cast<std::uint32_t>(
        crc32_z(0, reinterpret_cast<const Bytef*>(content.data()), content.size()));
    // Version, flags, method, time and date, check sum, sizes, lengths of name and extra fields.
    const Bytes common = U16(20) + U16(0) + U16(8) + U32(0) + U32(sum) +
                         U32(static_cast<std::uint32_t>(packed.size())) +
                         U32(static_cast<std::uint32_t>(content.size())) +
                         U16(static_cast<unsigned>(name.size())) + U16(0);
    directory += "PK\x01\x02" + U16(20) + common + U16(0) + U16(0) + U16(0) + U32(0) +
                 U32(static_cast<std::uint32_t>(archive.size())) + name;
    archive += "PK\x03\x04" + common + name + packed;
  }
  const auto count = static_cast<unsigned>(parts.size());
  return archive + directory + "PK\x05\x06" + U16(0) + U16(0) + U16(count) + U16(count) +
         U32(static_cast<std::uint32_t>(directory.size())) +
         U32(static_cast<std::uint32_t>(archive.size())) + U16(0);
}

}  // namespace korvex::test
