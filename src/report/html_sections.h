// The sections of a report's page. Each appends its markup to the page; what there is nothing to
// say about says so in a sentence.
#pragma once

#include <optional>
#include <string>

#include "engine/plate_layout.h"
#include "report/report.h"

namespace korvex {

// What the sections share: the record, and where its readings lie on plates. There are readings.
struct ReportedReadings {
  const RunRecord& record;
  const RunReadings& readings;
  const std::optional<PlateLayout>& layout;
  const std::string& why_no_layout;

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
void AppendInputs(const RunRecord& record, std::string& page);
void AppendPlates(const ReportedReadings& reported, std::string& page);
void AppendAgreement(const ReportedReadings& reported, std::string& page);
void AppendControls(const ReportedReadings& reported, const ReportOptions& options,
                    std::string& page);

}  // namespace korvex
