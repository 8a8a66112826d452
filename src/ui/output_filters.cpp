#include "ui/output_filters.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "files/basGeneral.h"
#include "text/text.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr std::string_view kEndings[] = {kXlsFormat.ending, kXlsxFormat.ending, kCsvFormat.ending};

// With its dot; empty when there is none.
std::string EndingOf(const std::string& file) {
  const std::string title = SharedFileSys().GetFileTitle(file, false);
  const std::size_t dot = title.rfind('.');
  return dot == std::string::npos ? "" : title.substr(dot);
}

}  // namespace

int OutputFilterOf(const std::string& file) {
  const auto found =
      std::find_if(std::begin(kEndings), std::end(kEndings),
                   [&](std::string_view known) { return EqualText(known, EndingOf(file)); });
  return found == std::end(kEndings) ? 0 : static_cast<int>(found - std::begin(kEndings));
}

std::string OutputFileChosen(const std::string& name, int offered, int chosen) {
  const std::string ending = EndingOf(name);
  if (!ending.empty() && (chosen == offered || !EqualText(ending, kEndings[offered]))) return name;
  return name.substr(0, name.size() - ending.size()).append(kEndings[chosen]);
}

}  // namespace korvex
