#include "spreadsheet/xls/compound_file_reader.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

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
  Bytes drawings;
  for (int i = 0; i < 8; ++i) drawings += Record(0x00EC, Bytes(8000, 'x'));
  const Bytes huge = OneSheet(TwoCells() + drawings);
  const struct {
    const char* condition;
    CompoundBytes file;
  } cases[] = {
      {"mini-stream", {.stream = small}},
      {"scattered mini-stream", {.stream = small, .is_scattered = true}},
      {"sectors backwards", {.stream = large, .is_scattered = true}},
      {"sectors of 4,096 bytes", {.stream = huge, .sector_shift = 12, .is_scattered = true}},
      {"other letter case", {.stream = large, .stream_name = "WORKBOOK"}},
  };
  for (const auto& test : cases) EXPECT_EQ(ListingOf(test.file.Build()), kCells) << test.condition;
}

// A sound file with numbers put into it, and cut to a size.
struct Damage {
  std::string condition;  // or why the file is refused
  std::vector<std::pair<std::size_t, std::uint32_t>> edits;
  std::size_t size = 0;
};

Bytes Damaged(const Damage& damage) {
  Bytes file = LargeWorkbook(TwoCells()).Build();
  for (const auto& [offset, number] : damage.edits) PutU32(file, offset, number);
  if (damage.size > 0) file.resize(damage.size);
  return file;
}

// Sectors: FAT, directory, data.
constexpr std::size_t kFat = 512, kRootEntry = 1024, kEntry = kRootEntry + 128, kData = 1536;

TEST(CompoundFileReader, ReadsThroughDamageThatHidesNothing) {
  const std::size_t stream_size = LargeWorkbook(TwoCells()).stream.size();
  const Damage cases[] = {
      {"short last sector", {}, kData + stream_size},
      {"FAT leads beyond the end behind the stream", {{kFat + 4 * 10, 5000}}},
      {"wrong number of FAT sectors", {{44, 77}}},
      {"unused places in the DIFAT", {{76, 0xFFFFFFFF}, {80, 0xFFFFFFFC}, {84, 0}}},
      {"stated size over the real one", {{kEntry + 120, 100'000}}},
      {"root entry without a name", {{kRootEntry, 0}, {kRootEntry + 64, 0x00050000}}},
      {"tree of entries lost", {{kRootEntry + 76, 0xFFFFFFFF}}},
      {"tree of entries in a circle", {{kEntry + 68, 1}, {kEntry + 72, 1}}},
  };
  for (const Damage& test : cases) EXPECT_EQ(ListingOf(Damaged(test)), kCells) << test.condition;
}

TEST(CompoundFileReader, RefusesDamageThatHidesTheWorkbook) {
  const Damage cases[] = {
      {"ends after 300 bytes, within its header", {}, 300},
      {"ends after 2,560 of 6,144 bytes", {}, 5 * 512},
      {"ends after 1,100 of 6,144 bytes", {}, kRootEntry + 76},
      {"ends after 1,270 of 6,144 bytes", {}, kEntry + 118},
      {"ends after 2,460 of 6,144 bytes", {}, 5 * 512 - 100},
      {"is damaged: its header gives a sector size of 2^20 bytes, where 2^9 and 2^12 are possible",
       {{30, 0x00060014}}},
      {"is damaged: the sector chain of its workbook runs in a circle", {{kFat + 4 * 5, 3}}},
      {"is damaged: two entries of its sector table lead to sector 7 of the workbook",
       {{kFat + 4 * 4, 7}}},
      {"is damaged: the sector chain of its directory runs in a circle", {{kFat + 4, 1}}},
      {"is damaged: its directory cannot be found", {{48, 0xFFFFFFFE}}},
      {"is not a workbook: it is a compound file without a workbook in it", {{kEntry, 'X'}}},
  };
  for (const Damage& test : cases) EXPECT_EQ(RefusalOf(Damaged(test)), test.condition);
  Bytes zeros_behind = Damaged({"", {}, kRootEntry});
  zeros_behind.resize(6144);
  EXPECT_EQ(RefusalOf(zeros_behind), "is damaged: its directory holds nothing but zero bytes");
}

TEST(CompoundFileReader, LeavesWorkbooksInsideOtherDocumentsAlone) {
  Bytes file = LargeWorkbook(TwoCells()).Build();
  constexpr std::size_t kOther = kEntry + 128;
  constexpr std::string_view kName = "WordDocument";
  for (std::size_t i = 0; i < kName.size(); ++i) PutU16(file, kOther + 2 * i, kName[i]);
  PutU16(file, kOther + 66, 2);                                           // a stream
  for (std::size_t at : {68, 72}) PutU32(file, kOther + at, 0xFFFFFFFF);  // alone
  PutU32(file, kRootEntry + 76, 2);                                       // in the root
  EXPECT_EQ(RefusalOf(file), "is not a workbook: it is a Word document");
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
