// The quality of each plate by its control wells: Z', signal window, and the wells themselves.
#include <algorithm>
#include <limits>
#include <span>
#include <utility>

#include "report/html_sections.h"
#include "report/html_text.h"
#include "report/statistics.h"
#include "report/svg_chart.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::size_t kStripsAChart = 40;
constexpr std::size_t kMostStrips = 400;
// A longer table is folded.
constexpr std::size_t kLongTable = 24;
// What a plate must reach to be called good in screening.
constexpr double kGoodZPrime = 0.5;

enum class Control : std::uint8_t { kNone, kLow, kHigh, kBoth };

bool IsChosen(const KeyedColumn& column, std::uint32_t key, const ControlChoice& choice) {
  // Names of columns ignore letter case as everywhere; the texts of wells must stand there as
  // given.
  if (!choice.column.empty() && !EqualText(choice.column, column.name)) return false;
  return TrimBlanks(column.Text(key)) == TrimBlanks(choice.text);
}

bool IsChosen(const RunReadings& readings, std::uint32_t key,
              const std::vector<ControlChoice>& choices) {
  return std::ranges::any_of(choices, [&](const ControlChoice& choice) {
    return std::ranges::any_of(
        readings.columns, [&](const KeyedColumn& column) { return IsChosen(column, key, choice); });
  });
}

std::vector<Control> ControlsOf(const RunReadings& readings, const ReportOptions& options) {
  // Once for each key, not for each reading: a key says the same in all its replications.
  std::vector<Control> controls;
  for (std::uint32_t key = 0; key < readings.keys.size(); ++key) {
    const bool is_low = IsChosen(readings, key, options.low);
    const bool is_high = IsChosen(readings, key, options.high);
    controls.push_back(is_low && is_high ? Control::kBoth
                       : is_low          ? Control::kLow
                       : is_high         ? Control::kHigh
                                         : Control::kNone);
  }
  return controls;
}

// A plate in one replication, or an input workbook where plates are not known.
struct Group {
  std::string name;
  std::int16_t replication = 0;
  std::vector<double> low;
  std::vector<double> high;
};

// By plate in order of appearance, then by replication.
std::vector<Group> Groups(const ReportedReadings& reported, const std::vector<Control>& controls) {
  struct ControlReading {
    std::uint32_t order;
    std::int16_t replication;
    const Reading* reading;
  };
  const bool has_plates = reported.layout.has_value();
  const auto plate_of = [&](const Reading& reading) {
    return has_plates ? reported.layout->plate_of_key[reading.key] : reading.input;
  };
  std::vector<std::uint32_t> order_of(
      has_plates ? reported.layout->format_of_plate.size() : reported.record.inputs.size(),
      std::numeric_limits<std::uint32_t>::max());
  std::uint32_t met = 0;
  std::vector<ControlReading> found;
  for (const Reading& reading : reported.readings.readings) {
    // Counted for readings that are no controls, too: plates stand in the order in which the run
    // met them.
    std::uint32_t& order = order_of[plate_of(reading)];
    if (order == std::numeric_limits<std::uint32_t>::max()) order = met++;
    const Control control = controls[reading.key];
    if (reading.text != Reading::kNumber || control == Control::kNone ||
        control == Control::kBoth) {
      continue;
    }
    found.push_back({order, reported.ReplicationOf(reading), &reading});
  }
  // The replications of a plate lie in several files, between which other plates were read.
  const auto group_of = [](const ControlReading& each) {
    return std::pair(each.order, each.replication);
  };
  std::ranges::stable_sort(found, {}, group_of);
  std::vector<Group> groups;
  for (std::size_t i = 0; i < found.size(); ++i) {
    const Reading& reading = *found[i].reading;
    if (i == 0 || group_of(found[i]) != group_of(found[i - 1])) {
      std::string name;
      // Without plates a workbook stands for one: it is one reading of one plate.
      if (!has_plates) {
        name = reported.record.inputs[reading.input].path;
      } else if (const auto column = reported.layout->plate_column) {
        name = reported.readings.columns[*column].Text(reading.key);
      }
      groups.push_back({std::move(name), found[i].replication, {}, {}});
    }
    (controls[reading.key] == Control::kLow ? groups.back().low : groups.back().high)
        .push_back(reading.number);
  }
  return groups;
}

struct Quality {
  ControlSample low;
  ControlSample high;
  std::optional<double> z_prime;
  std::optional<double> signal_window;
};

Quality QualityOf(const Group& group) {
  Quality quality{SampleOf(group.low), SampleOf(group.high), {}, {}};
  quality.z_prime = ZPrime(quality.low, quality.high);
  quality.signal_window = SignalWindow(quality.low, quality.high);
  return quality;
}

void AppendZPrimes(const std::vector<Quality>& qualities, std::string& page) {
  std::vector<double> values;
  for (const Quality& quality : qualities) {
    if (quality.z_prime) values.push_back(*quality.z_prime);
  }
  if (values.empty()) {
    Add(page,
        "<p class=\"note\">There is no Z': it takes two low and two high wells on a plate, and a "
        "difference between them.</p>\n");
    return;
  }
  std::ranges::sort(values);
  const auto good = std::ranges::count_if(values, [](double z) { return z >= kGoodZPrime; });
  Add(page, "<p>Z' is ", ShownFigure(values.front()), " to ", ShownFigure(values.back()),
      ", median ", ShownFigure(Percentile(values, 0.5)), "; ",
      GroupedDigits(static_cast<std::size_t>(good)), " of ", GroupedDigits(values.size()),
      " reach 0.5.</p>\n");
}

void AppendTable(const std::vector<Group>& groups, const std::vector<Quality>& qualities,
                 bool has_plates, std::string& page) {
  // The class "long" opens the table on paper, where nobody can click.
  const bool is_long = groups.size() > kLongTable;
  if (is_long) {
    Add(page, "<details class=\"long\"><summary>", GroupedDigits(groups.size()),
        " plates and replications</summary>");
  }
  Add(page, "<div class=\"scroll\"><table class=\"figures\"><thead><tr><th>",
      has_plates ? "plate" : "workbook",
      "</th><th>replication</th><th>low wells</th><th>mean</th><th>SD</th><th>high wells</th>"
      "<th>mean</th><th>SD</th><th>Z'</th><th>signal window</th></tr></thead><tbody>\n");
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const Quality& quality = qualities[i];
    Add(page, "<tr><td>", Escaped(groups[i].name), "</td><td>",
        std::to_string(groups[i].replication), "</td>");
    for (const ControlSample& sample : {quality.low, quality.high}) {
      Add(page, "<td>", std::to_string(sample.count), "</td><td>", ShownFigure(sample.mean),
          "</td><td>", ShownFigure(sample.deviation), "</td>");
    }
    Add(page, "<td>", ShownFigure(quality.z_prime), "</td><td>", ShownFigure(quality.signal_window),
        "</td></tr>\n");
  }
  Add(page, "</tbody></table></div>");
  if (is_long) Add(page, "</details>");
  Add(page, "\n");
}

// What a chart has room for of a plate or a workbook: the end, where names of a series differ.
std::string EndOf(std::string_view name) {
  constexpr std::size_t kMost = 16;
  name.remove_prefix(name.rfind('/') + 1);
  if (Utf16Length(name) <= kMost) return std::string(name);
  // Whole characters go, and one more than are too many: the ellipsis needs a place.
  while (Utf16Length(name) >= kMost) name.remove_prefix(FirstUtf8(name).length);
  return "…" + std::string(name);
}

void AppendCharts(const std::vector<Group>& groups, const std::vector<Quality>& qualities,
                  std::string& page) {
  std::vector<ControlStrip> strips;
  std::vector<double> values;
  for (std::size_t i = 0; i < std::min(groups.size(), kMostStrips); ++i) {
    const Group& group = groups[i];
    // Every chart names its first strip, even if the plate began in the chart before.
    const bool is_new = i % kStripsAChart == 0 || group.name != groups[i - 1].name;
    strips.push_back({is_new ? Escaped(EndOf(group.name)) : "",
                      Escaped(group.name) + " replication " + std::to_string(group.replication) +
                          ": Z' " + ShownFigure(qualities[i].z_prime),
                      group.low, group.high});
    values.insert(values.end(), group.low.begin(), group.low.end());
    values.insert(values.end(), group.high.begin(), group.high.end());
  }
  // One axis for all charts: plates whose signal drifts away are seen from one to the next.
  const Axis axis(values);
  Add(page, "<figure>");
  for (std::size_t first = 0; first < strips.size(); first += kStripsAChart) {
    Add(page, "<div class=\"scroll\">");
    const std::size_t count = std::min(strips.size() - first, kStripsAChart);
    AppendStrips(std::span(strips).subspan(first, count), axis, page);
    Add(page, "</div>\n");
  }
  Add(page,
      "<figcaption><svg width=\"12\" height=\"12\" aria-hidden=\"true\"><path class=\"lo\" "
      "d=\"M6 6h0\"/></svg> low, <svg width=\"12\" height=\"12\" aria-hidden=\"true\"><path "
      "class=\"hi\" d=\"M6 6h0\"/></svg> high; the bars are means. A strip is a replication.");
  if (strips.size() < groups.size()) {
    Add(page, " The first ", GroupedDigits(strips.size()), " of ", GroupedDigits(groups.size()),
        " are drawn.");
  }
  Add(page, "</figcaption></figure>\n");
}

std::string Named(const std::vector<ControlChoice>& choices) {
  std::string names;
  for (const ControlChoice& choice : choices) {
    Add(names, names.empty() ? "" : ", ", "<b>",
        choice.column.empty() ? "" : Escaped(choice.column) + "=", Escaped(choice.text), "</b>");
  }
  return names.empty() ? "none named" : names;
}

void AppendChosen(const RunReadings& readings, const ReportOptions& options,
                  const std::vector<Control>& controls, std::string& page) {
  const auto count = [&](Control control) {
    return Counted(static_cast<std::size_t>(std::ranges::count(controls, control)), "key");
  };
  Add(page, "<p>Low: ", Named(options.low), " (", count(Control::kLow),
      "). High: ", Named(options.high), " (", count(Control::kHigh), ").");
  // Left out rather than counted twice: such a well would pull both means together.
  if (std::ranges::count(controls, Control::kBoth) > 0) {
    Add(page, " ", count(Control::kBoth), " that would be both left out.");
  }
  for (const auto* choices : {&options.low, &options.high}) {
    for (const ControlChoice& choice : *choices) {
      // Said here, since a misspelt column only shows as wells that are missing.
      const bool is_known = choice.column.empty() ||
                            ContainsText(readings.columns, choice.column, &KeyedColumn::name);
      if (!is_known) {
        Add(page, " There is no key or output column <b>", Escaped(choice.column), "</b>.");
      }
    }
  }
  Add(page, "</p>\n");
}

}  // namespace

void AppendControls(const ReportedReadings& reported, const ReportOptions& options,
                    std::string& page) {
  if (options.low.empty() && options.high.empty()) return;
  const std::vector<Control> controls = ControlsOf(reported.readings, options);
  const std::vector<Group> groups = Groups(reported, controls);
  Add(page, "<section id=\"controls\"><h2>Controls</h2>\n");
  AppendChosen(reported.readings, options, controls, page);
  if (groups.empty()) {
    Add(page,
        "<p class=\"note\">No well with a number is a control. The texts must stand in a key or "
        "output column as given to <code>--low</code> and <code>--high</code>, in the same letter "
        "case.</p></section>\n");
    return;
  }
  std::vector<Quality> qualities;
  for (const Group& group : groups) qualities.push_back(QualityOf(group));
  AppendZPrimes(qualities, page);
  AppendCharts(groups, qualities, page);
  AppendTable(groups, qualities, reported.layout.has_value(), page);
  Add(page,
      "<p class=\"caption\">Z' = 1 − 3 (SD high + SD low) / |mean high − mean low| (Zhang 1999). "
      "Signal window = (|mean high − mean low| − 3 (SD high + SD low)) / SD high (Sittampalam "
      "1997). SD: sample standard deviation, n − 1.</p></section>\n");
}

}  // namespace korvex
