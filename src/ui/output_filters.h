// The kinds of output that the dialog for the output file offers, and the ending that each stands
// for. Filters count from 0.
#pragma once

#include <string>

namespace korvex {

// As the dialog takes them.
inline constexpr char kOutputFilters[] =
    "Excel Workbooks (*.xls)|*.xls|Excel Workbooks (*.xlsx)|*.xlsx|"
    "Comma-separated values (*.csv)|*.csv";

// The filter that a file is shown with: its own, or the first one.
int OutputFilterOf(const std::string& file);

// The file that is meant when the dialog, which opened with the filter `offered`, ends with `name`
// and the filter `chosen`. A name without an ending gets the chosen one. An ending that was merely
// offered gives way to it; one that was typed stands.
std::string OutputFileChosen(const std::string& name, int offered, int chosen);

}  // namespace korvex
