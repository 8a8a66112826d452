// What the options dialog decides, apart from its controls: what is done to a list of column names,
// and which file a typed name means.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvex {

// Positions are zero-based; names are compared letter case and all.
struct ColumnList {
  std::vector<std::string> names;
  std::optional<std::size_t> selected;
};

// Puts a name into the list, just before the name that is selected there, else at its end; the same
// name stays selected. Returns where it stands, or nothing when the list has it already.
std::optional<std::size_t> AddToList(const std::string& name, ColumnList& list);

// Takes the selected name out and selects the one that moves up into its place, or the last one.
// Returns where the name stood, if one was selected.
std::optional<std::size_t> RemoveFromList(ColumnList& list);

// A name for the output file that was typed without an ending, with ".xls" at its end.
std::string WithEnding(const std::string& typed);

// The kinds of output that the dialog for the output file offers; their filters count from 0.
inline constexpr char kOutputFilters[] =
    "Excel Workbooks (*.xls)|*.xls|Excel Workbooks (*.xlsx)|*.xlsx|"
    "Comma-separated values (*.csv)|*.csv|Tab-separated values (*.tsv)|*.tsv";

// The filter that a file is shown with: its own, or the first one.
int OutputFilterOf(const std::string& file);

// The file that is meant when the dialog, which opened with the filter `offered`, ends with `name`
// and the filter `chosen`. A name without an ending gets the chosen one. An ending that was merely
// offered gives way to it; one that was typed stands.
std::string OutputFileChosen(const std::string& name, int offered, int chosen);

}  // namespace korvex
