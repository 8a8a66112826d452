#include "spreadsheet/xls/compound_file_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/xls/compound_file.h"
#include "spreadsheet/xls/compound_file_reader.h"
#include "tests/spreadsheet/written_bytes.h"
#include "tests/support/errors.h"

namespace korvex::test {
namespace {

constexpr std::size_t kSector = 512;
using Ids = std::vector<std::uint32_t>;

// Follows every pointer of a file and accounts for every sector of it.
class WrittenFile {
 public:
  explicit WrittenFile(std::span<const std::byte> file)
      : file_(file), uses_(file.size() / kSector - 1, 0) {
    Ids fat_ids;
    Ids difat_ids;
    const auto take = [&](std::size_t at, std::size_t count) {
      for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t id = At(at + 4 * i);
        if (id != compound::kFreeSector) fat_ids.push_back(id);
      }
    };
    take(compound::header::kDifat, compound::kHeaderDifatEntries);
    std::uint32_t difat = At(compound::header::kFirstDifatSector);
    for (; difat != compound::kEndOfChain; difat = At(Offset(difat + 1) - 4)) {
      difat_ids.push_back(difat);
      take(Offset(difat), kSector / 4 - 1);
    }
    EXPECT_EQ(fat_ids.size(), At(compound::header::kFatSectorCount));
    EXPECT_EQ(difat_ids.size(), At(compound::header::kDifatSectorCount));
    for (const std::uint32_t id : fat_ids) {
      for (std::size_t i = 0; i < kSector / 4; ++i) fat_.push_back(At(Offset(id) + 4 * i));
    }
    ExpectMarks(fat_ids, compound::kFatSector);
    ExpectMarks(difat_ids, compound::kDifatSector);
  }

  std::uint32_t At(std::size_t offset) const { return LoadU32(file_.data() + offset); }
  std::vector<std::byte> Chain(std::uint32_t id) {
    std::vector<std::byte> content;
    for (; id != compound::kEndOfChain; id = fat_.at(id)) {
      ++uses_.at(id);
      const auto sector = file_.subspan(Offset(id), kSector);
      content.insert(content.end(), sector.begin(), sector.end());
    }
    return content;
  }
  void ExpectEverySectorOnce() const {
    EXPECT_EQ(std::count(uses_.begin(), uses_.end(), 1), std::ssize(uses_));
    EXPECT_TRUE(std::all_of(fat_.begin() + std::ssize(uses_), fat_.end(),
                            [](auto id) { return id == compound::kFreeSector; }));
  }

 private:
  static std::size_t Offset(std::uint32_t sector) { return (std::size_t{sector} + 1) * kSector; }
  void ExpectMarks(const Ids& sectors, std::uint32_t mark) {
    for (const std::uint32_t id : sectors) {
      ++uses_.at(id);
      EXPECT_EQ(fat_.at(id), mark);
    }
  }

  std::span<const std::byte> file_;
  std::vector<int> uses_;
  Ids fat_;
};

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
    WrittenFile file(bytes);
    EXPECT_EQ(file.At(compound::header::kDifatSectorCount), difats);
    const auto directory = file.Chain(file.At(compound::header::kFirstDirectorySector));
    const std::byte* const entry = directory.data() + compound::kDirectoryEntrySize;
    const std::vector<std::byte> chain = file.Chain(LoadU32(entry + compound::entry::kFirstSector));
    file.ExpectEverySectorOnce();
    const std::size_t told = LoadU32(entry + compound::entry::kSize);
    EXPECT_EQ(told, std::max<std::size_t>(size, compound::kMiniStreamCutoff));
    stream.resize(told);
    ASSERT_GE(chain.size(), told);
    EXPECT_TRUE(std::equal(stream.begin(), stream.end(), chain.begin()));

    std::vector<std::byte> storage;
    CompoundBuffers buffers;
    CompoundFileReader reader(bytes, buffers);
    EXPECT_TRUE(
        std::ranges::equal(reader.Read(reader.FindInRoot("Workbook"), storage).bytes, stream))
        << "this program's own reader";
  }
}

TEST(CompoundFileWriter, RefusesAStreamBeyondTwoGigabytes) {
  ByteWriter out(nullptr);
  EXPECT_EQ(ErrorOf([&] { CompoundFileWriter(out, 0x7FFFFFFF); }).Number(), 0);
  EXPECT_EQ(ErrorOf([&] { CompoundFileWriter(out, 0x80000000); }).Number(),
            error_number::kAutomation);
}

}  // namespace
}  // namespace korvex::test
