// Records of runs over made-up campaigns, for the tests of reports.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "engine/plate_layout.h"
#include "engine/run_record.h"

namespace korvex {

// The place of a reading in a campaign.
struct ReadingPlace {
  int plate;
  int replication;
  Well well;
};

// What a cell of the data column holds: a number, a text that is none, or nothing (nullopt in
// both).
struct MadeValue {
  std::optional<double> number;
  std::string text;
};

struct Campaign {
  int plates = 2;
  int replications = 3;
  PlateFormat format = kPlateFormats[0];
  std::function<std::string(const ReadingPlace&)> compound;
  std::function<MadeValue(const ReadingPlace&)> value;
};

// A growth assay: DMSO in the first column, tetracycline in the last, inhibitors among the others;
// a few wells without a reading and some "OVRFLW".
Campaign GrowthCampaign(int plates, int replications, const PlateFormat& format);

// The record of a finished run, keyed by compound, plate and well; rows are in the order of wells.
RunRecord RecordOf(const Campaign& campaign);

}  // namespace korvex
