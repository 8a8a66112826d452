#include "fuzzing/zip_file.h"

#include <zlib.h>

#include <cstdint>

namespace korvex::fuzz {
namespace {

std::string Number(std::size_t value, int size) {
  std::string bytes;
  for (; size > 0; --size, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  return bytes;
}

}  // namespace

std::string ZipFile(const std::vector<std::pair<std::string, std::string>>& parts) {
  std::string file;
  std::string directory;
  for (const auto& [name, content] : parts) {
    const auto sum = crc32_z(0, reinterpret_cast<const Bytef*>(content.data()), content.size());
    // Version, flags, method, time and date; check sum, sizes, lengths of name and extra fields.
    const std::string common = Number(20, 2) + Number(0, 8) + Number(sum, 4) +
                               Number(content.size(), 4) + Number(content.size(), 4) +
                               Number(name.size(), 4);
    directory += "PK\1\2" + Number(20, 2) + common + Number(0, 10) + Number(file.size(), 4) + name;
    file += "PK\3\4" + common + name + content;
  }
  return file + directory + "PK\5\6" + Number(0, 4) + Number(parts.size(), 2) +
         Number(parts.size(), 2) + Number(directory.size(), 4) + Number(file.size(), 4) +
         Number(0, 2);
}

}  // namespace korvex::fuzz
