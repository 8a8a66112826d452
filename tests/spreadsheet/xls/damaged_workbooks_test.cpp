// One plate as four programs write it, damaged as disks and copies damage files. Every file must be
// refused or still have all its wells.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "spreadsheet/xls/compound_file_reader.h"
#include "spreadsheet/xls/record_reader.h"
#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

constexpr std::size_t kSector = 512;
constexpr int kRounds = 100;  // of every kind of damage, in every file

using Random = std::mt19937;

std::size_t Below(Random& random, std::size_t limit) {
  return random() % limit;
}

// Where the headers of the records of the workbook stream lie in the file.
std::vector<std::size_t> RecordOffsets(const Bytes& file) {
  std::vector<std::byte> bytes(reinterpret_cast<const std::byte*>(file.data()),
                               reinterpret_cast<const std::byte*>(file.data() + file.size()));
  CompoundBuffers buffers;
  CompoundFileReader reader(bytes, buffers);
  std::vector<std::byte> storage;
  const CompoundStream stream = reader.Read(reader.FindInRoot("Workbook"), storage);
  const auto begin = static_cast<std::size_t>(stream.bytes.data() - bytes.data());
  std::vector<std::size_t> offsets;
  RecordReader records(stream.bytes, 0);
  while (records.Next()) offsets.push_back(begin + records.Offset());
  return offsets;
}

std::size_t AnySector(const Bytes& file, Random& random) {
  return kSector * Below(random, file.size() / kSector);
}

void PutJunk(Bytes& file, std::size_t at, std::size_t size, Random& random) {
  for (std::size_t i = 0; i < size; ++i) file[at + i] = static_cast<char>(random());
}

using Offsets = std::vector<std::size_t>;  // of the records' headers
using Damage = void (*)(Bytes&, const Offsets&, Random&);
constexpr std::pair<const char*, Damage> kDamages[] = {
    {"bit of a record's header",
     [](Bytes& file, const Offsets& records, Random& random) {
       const std::size_t bit = Below(random, 32);
       file[records[Below(random, records.size())] + bit / 8] ^= static_cast<char>(1 << bit % 8);
     }},
    {"a record's header",
     [](Bytes& file, const Offsets& records, Random& random) {
       PutJunk(file, records[Below(random, records.size())], 4, random);
     }},
    {"sector of zeros",
     [](Bytes& file, const Offsets&, Random& random) {
       file.replace(AnySector(file, random), kSector, kSector, '\0');
     }},
    {"sector of junk",
     [](Bytes& file, const Offsets&, Random& random) {
       PutJunk(file, AnySector(file, random), kSector, random);
     }},
    {"two sectors swapped",
     [](Bytes& file, const Offsets&, Random& random) {
       const std::size_t a = AnySector(file, random), b = AnySector(file, random);
       std::swap_ranges(&file[a], &file[a] + kSector, &file[b]);
     }},
    {"tail cut",
     [](Bytes& file, const Offsets&, Random& random) { file.resize(Below(random, file.size())); }},
    {"tail of zeros", [](Bytes& file, const Offsets&, Random& random) {
       const std::size_t at = AnySector(file, random);
       file.replace(at, file.size() - at, file.size() - at, '\0');
     }}};

using Wells = std::map<std::pair<int, int>, std::string>;

// The cells of the sheet "data", each with its kind; throws where the file is refused.
Wells WellsOf(const Bytes& file) {
  OpenedWorkbook workbook(file);
  for (std::size_t i = 0; i < workbook.Sheets().size(); ++i) {
    if (workbook.Sheets()[i].name != "data") continue;
    const SheetCells& cells = workbook.Cells(i);
    Wells wells;
    for (std::size_t n = 0; n < cells.Count(); ++n) {
      const SheetCells::Entry cell = cells.At(n);
      wells[{cell.row, cell.column}] =
          static_cast<char>('0' + static_cast<int>(cell.value.kind)) + CellText(cell.value);
    }
    return wells;
  }
  throw Error(error_number::kSubscript, "has no sheet \"data\"");
}

// What happened to the wells: refused, whole, missing, or changed to another value.
std::string Outcome(const Bytes& file, const Wells& sound) {
  Wells wells;
  try {
    wells = WellsOf(file);
  } catch (const Error& error) {
    EXPECT_FALSE(error.Description().empty());
    return "refused";
  }
  bool is_changed = false;
  for (const auto& [place, value] : sound) {
    const auto found = wells.find(place);
    if (found == wells.end()) return "missing";
    is_changed |= found->second != value;
  }
  return is_changed ? "changed" : "whole";
}

// A changed digit within a number cannot be noticed, hence the one per cent.
// KORVEX_DAMAGE_ROUNDS=1000 runs longer and prints the outcome of each kind of damage.
TEST(DamagedWorkbooks, AreRefusedOrKeepTheirWells) {
  const char* const more_rounds = std::getenv("KORVEX_DAMAGE_ROUNDS");
  const int rounds = more_rounds != nullptr ? std::atoi(more_rounds) : kRounds;
  std::map<std::string, int> all;
  for (const char* name : {"xlwt-screen.xls", "writeexcel-screen.xls", "libreoffice-screen.xls",
                           "gnumeric-screen.xls"}) {
    const Bytes file = DataFile(name);
    const std::vector<std::size_t> records = RecordOffsets(file);
    const Wells sound = WellsOf(file);
    ASSERT_EQ(sound.size(), 385u * 7 + 1) << name;
    Random random(20021203);
    for (const auto& [kind, damage] : kDamages) {
      std::map<std::string, int> outcomes;
      for (int round = 0; round < rounds; ++round) {
        Bytes copy = file;
        damage(copy, records, random);
        ++outcomes[Outcome(copy, sound)];
      }
      for (const auto& [outcome, count] : outcomes) {
        all[outcome] += count;
        if (more_rounds != nullptr) {
          std::printf("%s, %s: %s %d\n", name, kind, outcome.c_str(), count);
        }
      }
    }
  }
  const int damaged = all["refused"] + all["whole"] + all["missing"] + all["changed"];
  EXPECT_LE(100 * all["missing"], damaged) << all["missing"] << " of " << damaged;
  EXPECT_LE(100 * all["changed"], damaged) << all["changed"] << " of " << damaged;
  EXPECT_GT(all["whole"], 0);
}

}  // namespace
}  // namespace korvex::test
