#include "tests/report/campaign_record.h"

#include <cmath>
#include <map>

namespace korvex {
namespace {

// A value from 0 to 1 that looks random and is the same on every machine.
double Noise(std::uint32_t seed) {
  std::uint32_t mixed = seed * 2654435761U + 0x9E3779B9U;
  mixed = (mixed ^ mixed >> 15) * 0x85EBCA6BU;
  mixed = (mixed ^ mixed >> 13) * 0xC2B2AE35U;
  return static_cast<double>((mixed ^ mixed >> 16) >> 8) / (1 << 24);
}

std::uint32_t SeedOf(const ReadingPlace& place) {
  return static_cast<std::uint32_t>(place.plate * 1000003 + place.well.row * 4099 +
                                    place.well.column * 61);
}

class Texts {
 public:
  explicit Texts(KeyedColumn& column) : column_(column) {}

  void AddKey(const std::string& text) {
    const auto [it, is_new] =
        numbers_.try_emplace(text, static_cast<std::uint32_t>(column_.texts.size()));
    if (is_new) column_.texts.push_back(text);
    column_.text_of_key.push_back(it->second);
  }

 private:
  KeyedColumn& column_;
  std::map<std::string, std::uint32_t> numbers_;
};

}  // namespace

Campaign GrowthCampaign(int plates, int replications, const PlateFormat& format) {
  Campaign campaign{plates, replications, format, {}, {}};
  campaign.compound = [last = format.columns - 1](const ReadingPlace& place) -> std::string {
    if (place.well.column == 0) return "DMSO";
    if (place.well.column == last) return "tetracycline";
    return "KIN-" + std::to_string(place.plate * 10000 + place.well.row * 100 + place.well.column);
  };
  campaign.value = [last = format.columns - 1](const ReadingPlace& place) -> MadeValue {
    const std::uint32_t seed = SeedOf(place);
    const double chance = Noise(seed * 7 + static_cast<std::uint32_t>(place.replication));
    if (chance < 0.004) return {{}, "OVRFLW"};
    if (chance > 0.994) return {};
    double growth = 0.72 + 0.02 * place.plate / 10.0 - 0.004 * place.well.row;
    if (place.well.column == last) {
      growth = 0.045;
    } else if (place.well.column > 0 && Noise(seed) < 0.12) {
      growth *= 0.15 + 0.6 * Noise(seed + 17);
    }
    const double error = Noise(seed * 31 + static_cast<std::uint32_t>(place.replication)) +
                         Noise(seed * 57 + static_cast<std::uint32_t>(place.replication)) - 1;
    return {std::round((growth * (1 + 0.07 * error) + 0.006 * error) * 10000) / 10000, ""};
  };
  return campaign;
}

RunRecord RecordOf(const Campaign& campaign) {
  RunRecord record;
  record.outcome = RunRecord::Outcome::kFinished;
  record.processing_folder = "/home/ann/screens/kinases";
  record.key_columns = {"compound ID", "cell plate #", "well"};
  record.output_columns = {"cell plate #", "well", "compound ID"};
  record.data_column = "Delta OD";
  record.readings.emplace();
  RunReadings& readings = *record.readings;
  readings.columns = {{"compound ID", "chem_id", true, {}, {}},
                      {"cell plate #", "plate", true, {}, {}},
                      {"well", "well", true, {}, {}}};
  Texts compounds(readings.columns[0]);
  Texts plates(readings.columns[1]);
  Texts wells(readings.columns[2]);
  std::map<std::string, std::uint32_t> keys;
  for (int plate = 0; plate < campaign.plates; ++plate) {
    const std::string plate_name = std::to_string(1041 + plate);
    for (int replication = 1; replication <= campaign.replications; ++replication) {
      const auto input = static_cast<std::uint32_t>(record.inputs.size());
      const std::string name = "KIN" + plate_name + "-1-" + std::to_string(replication) + ".xls";
      record.inputs.push_back({"Set 1/" + name, record.processing_folder + "/Set 1/" + name, 0,
                               static_cast<std::int16_t>(replication), "1", "12/3/2002 10:15:00 AM",
                               3, campaign.format.wells, 0, 23552, std::string(64, 'a')});
      for (int number = 0; number < campaign.format.wells; ++number) {
        const ReadingPlace place{
            plate,
            replication,
            {number / campaign.format.columns, number % campaign.format.columns}};
        const std::string compound = campaign.compound(place);
        const std::string well = NameOf(place.well);
        const std::string name_of_key =
            "compound ID=" + compound + ";cell plate #=" + plate_name + ";well=" + well + ";";
        const auto [at, is_new] =
            keys.try_emplace(name_of_key, static_cast<std::uint32_t>(readings.keys.size()));
        if (is_new) {
          readings.keys.push_back(name_of_key);
          compounds.AddKey(compound);
          plates.AddKey(plate_name);
          wells.AddKey(well);
        }
        Reading reading{at->second, input, number + 3, Reading::kMissing, 0};
        const MadeValue value = campaign.value(place);
        if (value.number) {
          reading.text = Reading::kNumber;
          reading.number = *value.number;
        } else if (!value.text.empty()) {
          if (readings.reading_texts.empty() || readings.reading_texts.back() != value.text) {
            readings.reading_texts.push_back(value.text);
          }
          reading.text = static_cast<std::uint32_t>(readings.reading_texts.size() - 1);
        }
        readings.readings.push_back(reading);
      }
    }
  }
  record.input_count = record.inputs.size();
  record.output = {record.processing_folder + "/kinases.xls", 48640, std::string(64, 'b'),
                   static_cast<int>(readings.keys.size()) + 1, 3 + campaign.replications};
  return record;
}

}  // namespace korvex
