#include "spreadsheet/xls/compound_file_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/xls/compound_file.h"
#include "spreadsheet/xls/compound_file_reader.h"
#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

constexpr std::size_t kSector = 512;

TEST(CompoundFileWriter, AccountsForEverySectorOfAnySize) {
  // The most sectors that a stream may have for a FAT of 109 sectors, and for one DIFAT sector.
  constexpr std::size_t kHeaderFat = 109 * 128 - 109 - 1;
  constexpr std::size_t kOneDifat = (109 + 127) * 128 - (109 + 127) - 1 - 1;
  const std::pair<std::size_t, std::size_t> sizes_and_difats[] = {
      {1, 0},
      {4095, 0},
      {4097, 0},
      {126 * kSector, 0},
      {126 * kSector + 1, 0},
      {kHeaderFat * kSector, 0},
      {kHeaderFat * kSector + 1, 1},
      {kOneDifat * kSector, 1},
      {kOneDifat * kSector + 1, 2},
  };
  for (const auto& [size, difats] : sizes_and_difats) {
    SCOPED_TRACE(size);
    std::vector<std::byte> stream(size);
    for (std::size_t i = 0; i < size; ++i) stream[i] = static_cast<std::byte>(i + i / kSector);
    const std::string content = Written([&](ByteWriter& out) {
      CompoundFileWriter writer(out, stream.size());
      writer.WriteHeader();
      out.PutBytes(stream);
      writer.WriteTail();
    });
    ASSERT_EQ(content.size() % kSector, 0u);
    const auto* const begin = reinterpret_cast<const std::byte*>(content.data());
    std::vector<std::byte> bytes(begin, begin + content.size());
    std::vector<std::byte> storage;
    CompoundBuffers buffers;
    CompoundFileReader reader(bytes, buffers);
    stream.resize(std::max<std::size_t>(size, compound::kMiniStreamCutoff));
    EXPECT_TRUE(
        std::ranges::equal(reader.Read(reader.FindInRoot("Workbook"), storage).bytes, stream));

    // Two chains, of the directory and of the stream; every other sector is one of the tables'.
    const auto stated = [&](std::size_t offset) { return LoadU32(bytes.data() + offset); };
    const auto sectors = static_cast<std::ptrdiff_t>(content.size() / kSector) - 1;
    const auto marked = [&](std::uint32_t mark) {
      return std::count(buffers.fat.begin(), buffers.fat.begin() + sectors, mark);
    };
    EXPECT_EQ(marked(compound::kFatSector), stated(compound::header::kFatSectorCount));
    EXPECT_EQ(marked(compound::kDifatSector), difats);
    EXPECT_EQ(stated(compound::header::kDifatSectorCount), difats);
    EXPECT_EQ(marked(compound::kEndOfChain), 2);
    EXPECT_EQ(std::count(buffers.fat.begin(), buffers.fat.end(), compound::kFreeSector),
              std::ssize(buffers.fat) - sectors);
  }
}

TEST(CompoundFileWriter, RefusesAStreamBeyondTwoGigabytes) {
  MemoryFileSystem files(PathStyle::kLinux);
  const std::unique_ptr<ReplacementFile> file = files.Replace("/file");
  ByteWriter out(*file);
  EXPECT_EQ(ErrorOf([&] { CompoundFileWriter(out, 0x7FFFFFFF); }).Number(), 0);
  EXPECT_EQ(ErrorOf([&] { CompoundFileWriter(out, 0x80000000); }).Number(),
            error_number::kAutomation);
}

}  // namespace
}  // namespace korvex::test
