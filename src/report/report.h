// The report of a run: one self-contained page for people (HTML with pictures), and the same facts
// for programs (JSON).
#pragma once

#include <string>
#include <vector>

#include "engine/run_record.h"

namespace korvex {

// The wells that hold a control: those whose value in a key or output column is `text`, in any
// column when none is named.
// Blanks around the text do not count, its letter case does; that of the column does not.
struct ControlChoice {
  std::string column;
  std::string text;
};

// A choice that no well meets makes nothing fail: the page says so. Wells that are both low and
// high are left out.
struct ReportOptions {
  std::vector<ControlChoice> low;
  std::vector<ControlChoice> high;
};

// UTF-8. Both are the same for equal records: there is no clock time, user name or address in them.
std::string HtmlReport(const RunRecord& record, const ReportOptions& options);
std::string JsonReport(const RunRecord& record, const ReportOptions& options);

}  // namespace korvex
