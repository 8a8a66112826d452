// What the arrow buttons of the options dialog do to a list of column names. Positions are
// zero-based; names are compared letter case and all.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvex {

struct ColumnList {
  std::vector<std::string> names;
  std::optional<std::size_t> selected;
};

// Copies the selected name of one list into another, just before the name that is selected there,
// else to its end; what was selected stays so. Returns where the name now stands: nowhere when
// there is none to add, or the list has it already.
std::optional<std::size_t> AddToList(const ColumnList& source, ColumnList& destination);

// Takes the selected name out and selects the one that moves up into its place, or the last one.
// Returns where the name stood, if one was selected.
std::optional<std::size_t> RemoveFromList(ColumnList& list);

}  // namespace korvex
