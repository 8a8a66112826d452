#include "ui/option_choices.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "files/basGeneral.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

auto At(std::vector<std::string>& names, std::size_t position) {
  return names.begin() + static_cast<std::ptrdiff_t>(position);
}

constexpr std::string_view kEndings[] = {kXlsFormat.ending, kXlsxFormat.ending, kCsvFormat.ending,
                                         kTsvFormat.ending};

// With its dot; empty when there is none.
std::string EndingOf(const std::string& file) {
  const std::string title = SharedFileSys().GetFileTitle(file, false);
  const std::size_t dot = title.rfind('.');
  return dot == std::string::npos ? "" : title.substr(dot);
}

}  // namespace

std::optional<std::size_t> AddToList(const std::string& name, ColumnList& list) {
  std::vector<std::string>& names = list.names;
  if (std::find(names.begin(), names.end(), name) != names.end()) return std::nullopt;
  const std::size_t position = list.selected.value_or(names.size());
  names.insert(At(names, position), name);
  if (list.selected) ++*list.selected;
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

std::string WithEnding(const std::string& typed) {
  const std::string_view name = TrimBlanks(typed);
  const bool is_folder = name.ends_with(Platform().files->Separator());
  if (name.empty() || is_folder || !EndingOf(std::string(name)).empty()) return typed;
  return std::string(name).append(kXlsFormat.ending);
}

int OutputFilterOf(const std::string& file) {
  const auto found =
      std::find_if(std::begin(kEndings), std::end(kEndings),
                   [&](std::string_view known) { return EqualText(known, EndingOf(file)); });
  return found == std::end(kEndings) ? 0 : static_cast<int>(found - std::begin(kEndings));
}

std::string OutputFileChosen(const std::string& name, int offered, int chosen) {
  const std::string ending = EndingOf(name);
  // An ending that differs from the offered one was typed. With the filter unchanged there is no
  // other ending to give.
  if (!ending.empty() && (chosen == offered || !EqualText(ending, kEndings[offered]))) return name;
  return name.substr(0, name.size() - ending.size()).append(kEndings[chosen]);
}

}  // namespace korvex
