#include "spreadsheet/compound_file_writer.h"

#include <gtest/gtest.h>

#include "spreadsheet/byte_writer.h"
#include "spreadsheet/compound_file.h"
#include "spreadsheet/little_endian.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

constexpr std::size_t kSector = 512;
constexpr char kFile[] = "/out.xls";

std::vector<std::byte> Stream(std::size_t size) {
  std::vector<std::byte> bytes(size);
  for (std::size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<std::byte>(i % kSector + i / kSector);
  return bytes;
}

std::string FileAround(std::span<const std::byte> stream) {
  MemoryFileSystem files(PathStyle::kLinux);
  const auto file = files.Replace(kFile);
  ByteWriter out(file.get());
  CompoundFileWriter writer(out, stream.size());
  writer.WriteHeader();
  out.PutBytes(stream);
  writer.WriteTail();
  out.Flush();
  file->Commit();
  return files.Content(kFile);
}

// Follows every pointer of a file and accounts for every sector of it.
class WrittenFile {
 public:
  explicit WrittenFile(const std::string& file)
      : bytes_(reinterpret_cast<const std::byte*>(file.data())),
        sectors_(file.size() / kSector - 1),
        found_(sectors_, false) {
    EXPECT_EQ(file.size() % kSector, 0u);
    LoadFat();
  }

  std::uint32_t Header(std::size_t offset) const { return LoadU32(bytes_ + offset); }
  const std::byte* Sector(std::uint32_t id) const {
    return bytes_ + (std::size_t{id} + 1) * kSector;
  }
  std::size_t FatSectors() const { return fat_.size() / (kSector / 4); }

  std::vector<std::byte> Chain(std::uint32_t id) {
    std::vector<std::byte> content;
    for (; id != compound::kEndOfChain; id = fat_.at(id)) {
      Find(id);
      content.insert(content.end(), Sector(id), Sector(id) + kSector);
    }
    return content;
  }

  void ExpectNothingElse() const {
    EXPECT_EQ(std::count(found_.begin(), found_.end(), false), 0);
    for (std::size_t id = sectors_; id < fat_.size(); ++id) {
      EXPECT_EQ(fat_[id], compound::kFreeSector);
    }
  }

 private:
  void Find(std::uint32_t id) {
    EXPECT_FALSE(found_.at(id)) << "sector " << id << " is used twice";
    found_.at(id) = true;
  }

  void LoadFat() {
    std::vector<std::uint32_t> fat_ids;
    std::vector<std::uint32_t> difat_ids;
    const auto take = [&](const std::byte* at, std::size_t count) {
      for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t id = LoadU32(at + 4 * i);
        if (id != compound::kFreeSector) fat_ids.push_back(id);
      }
    };
    take(bytes_ + compound::header::kDifat, compound::kHeaderDifatEntries);
    std::uint32_t difat = Header(compound::header::kFirstDifatSector);
    for (; difat != compound::kEndOfChain; difat = LoadU32(Sector(difat) + kSector - 4)) {
      difat_ids.push_back(difat);
      take(Sector(difat), kSector / 4 - 1);
    }
    EXPECT_EQ(fat_ids.size(), Header(compound::header::kFatSectorCount));
    EXPECT_EQ(difat_ids.size(), Header(compound::header::kDifatSectorCount));
    for (const std::uint32_t id : fat_ids) {
      for (std::size_t i = 0; i < kSector / 4; ++i) fat_.push_back(LoadU32(Sector(id) + 4 * i));
    }
    for (const std::uint32_t id : fat_ids) ExpectMark(id, compound::kFatSector);
    for (const std::uint32_t id : difat_ids) ExpectMark(id, compound::kDifatSector);
  }

  void ExpectMark(std::uint32_t id, std::uint32_t mark) {
    Find(id);
    EXPECT_EQ(fat_.at(id), mark);
  }

  const std::byte* bytes_;
  std::size_t sectors_;
  std::vector<bool> found_;
  std::vector<std::uint32_t> fat_;
};

TEST(CompoundFileWriter, AccountsForEverySectorOfAnySize) {
  // The most sectors that a stream may have for a FAT of 109 sectors, and for one DIFAT sector.
  constexpr std::size_t kHeaderFat = 109 * 128 - 109 - 1;
  constexpr std::size_t kOneDifat = (109 + 127) * 128 - (109 + 127) - 1 - 1;
  const struct {
    std::size_t size;
    std::size_t fat_sectors;
    std::size_t difat_sectors;
  } cases[] = {
      {1, 1, 0},
      {4095, 1, 0},
      {4096, 1, 0},
      {4097, 1, 0},
      {126 * kSector, 1, 0},
      {126 * kSector + 1, 2, 0},
      {kHeaderFat * kSector, 109, 0},
      {kHeaderFat * kSector + 1, 110, 1},
      {kOneDifat * kSector, 236, 1},
      {kOneDifat * kSector + 1, 237, 2},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.size);
    std::vector<std::byte> stream = Stream(test.size);
    const std::string content = FileAround(stream);
    WrittenFile file(content);
    EXPECT_EQ(file.FatSectors(), test.fat_sectors);
    EXPECT_EQ(file.Header(compound::header::kDifatSectorCount), test.difat_sectors);

    const auto directory = file.Chain(file.Header(compound::header::kFirstDirectorySector));
    const std::byte* const entry = directory.data() + compound::kDirectoryEntrySize;
    const auto size = LoadU32(entry + compound::entry::kSize);
    EXPECT_EQ(size, std::max<std::size_t>(test.size, compound::kMiniStreamCutoff));
    stream.resize((size + kSector - 1) / kSector * kSector);
    EXPECT_TRUE(file.Chain(LoadU32(entry + compound::entry::kFirstSector)) == stream);
    file.ExpectNothingElse();
  }
}

TEST(CompoundFileWriter, RefusesAStreamBeyondTwoGigabytes) {
  ByteWriter out(nullptr);
  EXPECT_EQ(ErrorOf([&] { CompoundFileWriter(out, 0x7FFFFFFF); }).Number(), 0);
  EXPECT_EQ(ErrorOf([&] { CompoundFileWriter(out, 0x80000000); }).Number(),
            error_number::kAutomation);
}

}  // namespace
}  // namespace korvex
