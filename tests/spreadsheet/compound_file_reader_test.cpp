#include "spreadsheet/compound_file_reader.h"

#include <gtest/gtest.h>

#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

constexpr char kCells[] = "1,1 number 1 | 7,3 number 2.5";

Bytes TwoCells() {
  return NumberCell(0, 0, 1) + NumberCell(6, 2, 2.5);
}

TEST(CompoundFileReader, FindsTheWorkbookWhereverItLies) {
  const Bytes small = OneSheet(TwoCells());
  const Bytes large = LargeWorkbook(TwoCells()).stream;
  const Bytes huge = OneSheet(TwoCells() + Record(0x0FFF, Bytes(60000, 'x')));
  Bytes beyond_difat = OneSheet(TwoCells());
  beyond_difat.resize(7'300'000);
  const struct {
    const char* condition;
    CompoundBytes file;
  } cases[] = {
      {"mini-stream", {.stream = small}},
      {"scattered mini-stream", {.stream = small, .is_scattered = true}},
      {"sectors in sequence", {.stream = large}},
      {"sectors backwards", {.stream = large, .is_scattered = true}},
      {"sectors of 4,096 bytes", {.stream = huge, .sector_shift = 12, .is_scattered = true}},
      {"FAT over 109 sectors", {.stream = beyond_difat, .is_scattered = true}},
      {"other letter case", {.stream = large, .stream_name = "WORKBOOK"}},
      {"stream of Excel 5", {.stream = large, .stream_name = "Book"}},
  };
  for (const auto& test : cases) EXPECT_EQ(ListingOf(test.file.Build()), kCells) << test.condition;
}

TEST(CompoundFileReader, ReadsThroughDamageThatHidesNothing) {
  const CompoundBytes good = LargeWorkbook(TwoCells());
  const std::uint32_t data = 2;  // sectors: FAT, directory, data
  struct Case {
    const char* condition;
    void (*damage)(const CompoundBytes& good, Bytes& file);
  };
  const Case cases[] = {
      {"short last sector",
       [](const CompoundBytes& file, Bytes& bytes) {
         bytes.resize(file.SectorOffset(data) + file.stream.size());
       }},
      {"FAT leads beyond the end behind the stream",
       [](const CompoundBytes& file, Bytes& bytes) {
         PutU32(bytes, file.FatOffset(data + 8), 5000);
       }},
      {"wrong number of FAT sectors",
       [](const CompoundBytes&, Bytes& bytes) { PutU32(bytes, 44, 77); }},
      {"unused places in the DIFAT",
       [](const CompoundBytes&, Bytes& bytes) {
         PutU32(bytes, 76, 0xFFFFFFFF);
         PutU32(bytes, 80, 0xFFFFFFFC);
         PutU32(bytes, 84, 0);
       }},
      {"stated size over the real one",
       [](const CompoundBytes& file, Bytes& bytes) {
         PutU32(bytes, file.EntryOffset() + 120, 100'000);
       }},
      {"root entry without a name",
       [](const CompoundBytes& file, Bytes& bytes) {
         bytes.replace(file.SectorOffset(1), 66, 66, '\0');
       }},
      {"tree of entries lost",
       [](const CompoundBytes& file, Bytes& bytes) {
         PutU32(bytes, file.SectorOffset(1) + 76, 0xFFFFFFFF);
       }},
      {"tree of entries in a circle",
       [](const CompoundBytes& file, Bytes& bytes) {
         PutU32(bytes, file.EntryOffset() + 68, 1);
         PutU32(bytes, file.EntryOffset() + 72, 1);
       }},
  };
  for (const Case& test : cases) {
    Bytes file = good.Build();
    test.damage(good, file);
    EXPECT_EQ(ListingOf(file), kCells) << test.condition;
  }
}

TEST(CompoundFileReader, RefusesDamageThatHidesTheWorkbook) {
  const CompoundBytes good = LargeWorkbook(TwoCells());
  struct Case {
    void (*damage)(const CompoundBytes& good, Bytes& file);
    const char* refusal;
  };
  const Case cases[] = {
      {[](const CompoundBytes&, Bytes& file) { file.resize(300); },
       "ends after 300 bytes, within its header"},
      {[](const CompoundBytes&, Bytes& file) { file.resize(5 * 512); },
       "ends after 2,560 of 6,144 bytes"},
      {[](const CompoundBytes&, Bytes& file) { file.resize(5 * 512 - 100); },
       "ends after 2,460 of 6,144 bytes"},
      {[](const CompoundBytes&, Bytes& file) { PutU16(file, 30, 20); },
       "is damaged: its header gives a sector size of 2^20 bytes, where 2^9 and 2^12 are possible"},
      {[](const CompoundBytes& all, Bytes& file) { PutU32(file, all.FatOffset(5), 3); },
       "is damaged: the sector chain of its workbook runs in a circle"},
      {[](const CompoundBytes& all, Bytes& file) { PutU32(file, all.FatOffset(1), 1); },
       "is damaged: the sector chain of its directory runs in a circle"},
      {[](const CompoundBytes&, Bytes& file) { PutU32(file, 48, 0xFFFFFFFE); },
       "is damaged: its directory cannot be found"},
      {[](const CompoundBytes& all, Bytes& file) { file[all.EntryOffset()] = 'X'; },
       "is not an .xls workbook: it is a compound file without a workbook stream"},
  };
  for (const Case& test : cases) {
    Bytes file = good.Build();
    test.damage(good, file);
    EXPECT_EQ(RefusalOf(file), test.refusal);
  }
}

// Every sector of the DIFAT lists the same FAT sector and leads to the other.
TEST(CompoundFileReader, EndsWhenTheDifatRunsInACircle) {
  Bytes file = LargeWorkbook(TwoCells()).Build();
  const std::size_t first = file.size() / 512 - 1;
  for (std::size_t i = 0; i < 2; ++i) {
    for (int k = 0; k < 127; ++k) file += U32(0xFFFFFFFF);
    file += U32(static_cast<std::uint32_t>(first + 1 - i));
  }
  PutU32(file, 68, static_cast<std::uint32_t>(first));
  PutU32(file, 76, 0xFFFFFFFF);
  EXPECT_EQ(RefusalOf(file), "is damaged: its DIFAT chain runs in a circle");
}

}  // namespace
}  // namespace korvex::test
