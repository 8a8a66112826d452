// The sections of a report's page. Each appends its markup to the page; what there is nothing to
// say about says so in a sentence.
#pragma once

#include <optional>
#include <string>

#include "engine/plate_layout.h"
#include "report/report.h"

namespace korvex {

// What the sections share: the record, and where its readings lie on plates. There are readings.
// All four must outlive it.
struct ReportedReadings {
  const RunRecord& record;
  const RunReadings& readings;
  const std::optional<PlateLayout>& layout;
  const std::string& why_no_layout;

  // The number in the name of the workbook, not its letter in the output.
  std::int16_t ReplicationOf(const Reading& reading) const {
    return record.inputs[reading.input].replication;
  }
};

// Title and outcome.
void AppendHeader(const RunRecord& record, std::string& page);
// Counts and settings.
void AppendSummary(const RunRecord& record, const ReportOptions& options,
                   const std::optional<PlateLayout>& layout, std::string& page);
// What made the run fail or a check found, then what was noticed.
void AppendFindings(const RunRecord& record, std::string& page);
// A table of the workbooks, with the digests that name their contents.
void AppendInputs(const RunRecord& record, std::string& page);
// Maps of the plates, or why there are none.
void AppendPlates(const ReportedReadings& reported, std::string& page);
// Pairs of replications against each other, and the variation of each key over its replications.
void AppendAgreement(const ReportedReadings& reported, std::string& page);
// Nothing at all when no control was named; else quality by plate and replication.
void AppendControls(const ReportedReadings& reported, const ReportOptions& options,
                    std::string& page);

}  // namespace korvex
