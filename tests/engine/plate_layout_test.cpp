#include "engine/plate_layout.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>

#include "text/text.h"

namespace korvex {
namespace {

using testing::HasSubstr;

std::string Show(const std::optional<Well>& well) {
  return well ? NameOf(*well) : "none";
}

TEST(PlateLayout, KnowsWellsByNameAndNumber) {
  const std::pair<const char*, const char*> names[] = {
      {"A01", "A01"},
      {"a1", "A01"},
      {"H12", "H12"},
      {"P24", "P24"},
      {"Z48", "Z48"},
      {"AA3", "AA03"},
      {"AF48", "AF48"},
      {"A001", "A01"},
      {" B02\t", "B02"},
      {"\xC2\xA0"
       "B02 \xC2\xA0",
       "B02"},
      {"AG1", "none"},
      {"BA1", "none"},
      {"A49", "none"},
      {"A00", "none"},
      {"A", "none"},
      {"", "none"},
      {"12", "none"},
      {"A-1", "none"},
      {"A1x", "none"},
      {"7E05", "none"},
      {"A 1", "none"},
      {"AAA1", "none"},
      {"A0001", "none"},
      {"Ä01", "none"},
  };
  for (const auto& [text, well] : names) EXPECT_EQ(Show(WellFromName(text)), well) << text;

  const std::tuple<const char*, int, const char*> numbers[] = {
      {"1", 0, "A01"},     {"13", 0, "B01"},  {"96", 0, "H12"},           {"97", 0, "none"},
      {"13", 1, "A13"},    {"384", 1, "P24"}, {"1536", 2, "AF48"},        {" 02 ", 2, "A02"},
      {"1537", 2, "none"}, {"0", 0, "none"},  {"-1", 0, "none"},          {"1.0", 0, "none"},
      {"+1", 0, "none"},   {"", 0, "none"},   {"99999999999", 2, "none"},
  };
  for (const auto& [text, format, well] : numbers) {
    EXPECT_EQ(Show(WellFromNumber(text, kPlateFormats[format])), well) << text;
  }
}

// A campaign whose columns are filled from the number of the key. "*" behind a name: in the key.
struct Campaign {
  using Fill = std::function<std::string(int)>;

  Campaign(int keys, const std::vector<std::pair<std::string, Fill>>& fills, int replications = 2) {
    for (int replication = 1; replication <= replications; ++replication) {
      InputRecord& input = inputs.emplace_back();
      input.path = "a/P-1-" + std::to_string(replication) + ".xls";
      input.replication = static_cast<std::int16_t>(replication);
    }
    for (const auto& [name, fill] : fills) {
      KeyedColumn column;
      column.in_key = name.ends_with('*');
      column.name = name.substr(0, name.size() - (column.in_key ? 1 : 0));
      std::map<std::string, std::uint32_t> numbers;
      for (int key = 0; key < keys; ++key) {
        const auto [at, is_new] =
            numbers.try_emplace(fill(key), static_cast<std::uint32_t>(column.texts.size()));
        if (is_new) column.texts.push_back(at->first);
        column.text_of_key.push_back(at->second);
      }
      readings.columns.push_back(std::move(column));
    }
    readings.keys.resize(static_cast<std::size_t>(keys));
    for (std::uint32_t input = 0; input < inputs.size(); ++input) {
      for (int key = 0; key < keys; ++key) {
        readings.readings.push_back({.key = static_cast<std::uint32_t>(key),
                                     .input = input,
                                     .row = key + 3,
                                     .text = Reading::kNumber});
      }
    }
  }

  // "plate/well 96 384", or why there is none.
  std::string Layout(std::string_view plate = "", std::string_view well = "") const {
    std::string why_not;
    const auto layout = FindPlateLayout(readings, inputs, plate, well, why_not);
    if (!layout) return why_not;
    std::string shown = layout->plate_column ? readings.columns[*layout->plate_column].name : "-";
    shown += "/" + readings.columns[layout->well_column].name;
    for (const PlateFormat* format : layout->format_of_plate) {
      shown += " " + std::to_string(format->wells);
    }
    return shown;
  }

  RunReadings readings;
  std::vector<InputRecord> inputs;
};

Campaign::Fill Names(const PlateFormat& format) {
  return [format](int key) {
    return NameOf({key % format.wells / format.columns, key % format.columns});
  };
}
Campaign::Fill Numbers(int wells) {
  return [wells](int key) { return std::to_string(key % wells + 1); };
}
Campaign::Fill Every(int keys, std::string prefix) {
  return [=](int key) { return prefix + std::to_string(key / keys + 1); };
}
std::string Same(int) {
  return "same";
}

TEST(PlateLayout, FindsPlatesAndWells) {
  const auto names96 = Names(kPlateFormats[0]);
  const auto names384 = Names(kPlateFormats[1]);
  const struct {
    const char* what;
    Campaign campaign;
    const char* layout;
  } cases[] = {
      {"names, and plates with numbers",
       {288, {{"id*", Every(1, "C-")}, {"plate*", Every(96, "")}, {"well*", names96}}},
       "plate/well 96 96 96"},
      {"names go before numbers that fill a plate, and before names in one row",
       {192,
        {{"row*", Numbers(96)},
         {"box", Every(16, "C")},
         {"plate*", Every(96, "P")},
         {"well", names96}}},
       "plate/well 96 96"},
      {"the key before the output, and wells before plates that are named alike",
       {192,
        {{"well*", names96},
         {"target", [=](int key) { return names96(95 - key % 96); }},
         {"plate*", [](int key) { return key < 96 ? "A1" : "B1"; }}}},
       "plate/well 96 96"},
      {"numbers: the column that fills its plates",
       {960, {{"plate*", Every(96, "")}, {"pos*", Numbers(96)}}},
       "plate/pos 96 96 96 96 96 96 96 96 96 96"},
      {"more plates than wells",
       {97 * 96, {{"plate*", Every(96, "")}, {"pos*", Numbers(96)}, {"set*", Same}}},
       "plate/pos 96"},
      {"as many plates as wells, in numbers",
       {96 * 96, {{"plate*", Every(96, "")}, {"pos*", Numbers(96)}}},
       "plate/pos 96"},
      {"numbers have one format for all plates",
       {474, {{"plate*", Every(384, "P")}, {"pos*", Numbers(384)}}},
       "plate/pos 384 384"},
      {"numbers that fill no plate are no wells",
       {100, {{"id*", Every(10, "C-")}, {"plate*", Numbers(10)}}},
       "No key or output column holds wells"},
      {"plates of two formats, and a wrong well",
       {480,
        {{"plate*", [](int key) { return key < 384 ? "big" : "small"; }},
         {"well*",
          [=](int key) { return key == 400  ? "J1"
                                : key < 384 ? names384(key)
                                            : names96(key); }}}},
       "plate/well 384 96"},
      {"the fewest values; a set has its plates' names behind it",
       {192,
        {{"set*", Every(96, "Set ")},
         {"plate*", Every(96, "P")},
         {"half*", Every(48, "H")},
         {"well*", names96}}},
       "plate/well 96 96"},
      {"one plate with a name", {96, {{"plate*", Same}, {"well*", names96}}}, "plate/well 96"},
      {"one plate without a name, whatever else is in the key",
       {96, {{"strain*", Every(48, "S")}, {"well*", names96}}},
       "-/well 96"},
      {"no plates, since one to a well or two are none",
       {192, {{"id*", Every(2, "C-")}, {"well*", names96}}},
       "no key column tells their plates apart"},
      {"5 % without a well",
       {96, {{"well*", [=](int key) { return key % 24 == 0 ? "empty" : names96(key); }}}},
       "-/well 96"},
      {"more than 5 % without a well",
       {96, {{"well*", [=](int key) { return key % 16 == 0 ? "empty" : names96(key); }}}},
       "add the column of the wells"},
      {"nothing", {0, {{"well*", names96}}}, "There are no readings."},
  };
  for (const auto& [what, campaign, layout] : cases) {
    EXPECT_THAT(campaign.Layout(), HasSubstr(layout)) << what;
  }
}

TEST(PlateLayout, TakesTheColumnsThatTheUserNames) {
  const Campaign campaign(
      192,
      {{"source*", Every(96, "Set ")},
       {"Plate", Every(96, "P")},
       {"wells*", Names(kPlateFormats[0])},
       {"number", Numbers(96)},
       {"few", [](int key) { return key < 8 ? "A0" + std::to_string(key) : std::string("-"); }}});
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"", "", "source/wells 96 96"},
      {"PLATE", "", "Plate/wells 96 96"},
      {"", "number", "source/number 96 96"},
      {"Plate", "few", "Plate/few 96 96"},
      {"nowhere", "", "There is no key or output column \"nowhere\"."},
      {"", "source", "The column \"source\" holds no wells such as A01, and no numbers of wells."},
      {"wells", "wells", "Plates and wells cannot be in one column, \"wells\"."},
      {"few", "wells",
       "Plate \"-\" has more than one reading of well A09 in replication 1 (a/P-1-1.xls, row 11; "
       "a/P-1-1.xls, row 107): name the columns that tell the plates and the wells apart with "
       "--plate and --well."},
  };
  for (const auto& [plate, well, layout] : cases) {
    EXPECT_EQ(campaign.Layout(plate, well), layout) << plate << "/" << well;
  }
}

TEST(PlateLayout, PutsEveryKeyOnItsPlate) {
  const Campaign campaign(
      480, {{"plate*", [](int key) { return key < 384 ? "big" : "small"; }},
            {"well*", [](int key) {
               return key == 400 ? "J1"
                                 : Names(kPlateFormats[key < 384])(key < 384 ? key : key - 384);
             }}});
  std::string why_not;
  const auto layout = FindPlateLayout(campaign.readings, campaign.inputs, "", "", why_not);
  ASSERT_TRUE(layout) << why_not;
  for (const auto& [key, plate, well] :
       std::vector<std::tuple<std::size_t, std::uint32_t, const char*>>{
           {0, 0, "A01"}, {383, 0, "P24"}, {384, 1, "A01"}, {400, 1, "none"}, {479, 1, "H12"}}) {
    EXPECT_EQ(layout->plate_of_key[key], plate) << key;
    EXPECT_EQ(Show(layout->well_of_key[key]), well) << key;
  }
}

}  // namespace
}  // namespace korvex
