#include "ui/column_list.h"

#include <algorithm>

namespace korvex {
namespace {

auto At(std::vector<std::string>& names, std::size_t position) {
  return names.begin() + static_cast<std::ptrdiff_t>(position);
}

}  // namespace

std::optional<std::size_t> AddToList(const ColumnList& source, ColumnList& destination) {
  if (!source.selected) return std::nullopt;
  const std::string& name = source.names[*source.selected];
  std::vector<std::string>& names = destination.names;
  if (std::find(names.begin(), names.end(), name) != names.end()) return std::nullopt;
  const std::size_t position = destination.selected.value_or(names.size());
  names.insert(At(names, position), name);
  if (destination.selected) ++*destination.selected;
  return position;
}

std::optional<std::size_t> RemoveFromList(ColumnList& list) {
  if (!list.selected) return std::nullopt;
  const std::size_t position = *list.selected;
  list.names.erase(At(list.names, position));
  list.selected.reset();
  if (!list.names.empty()) list.selected = std::min(position, list.names.size() - 1);
  return position;
}

}  // namespace korvex
