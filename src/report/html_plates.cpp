// The maps of the plates: all of them small in one colour scale, then each large in its own.
#include <algorithm>
#include <limits>
#include <span>
#include <tuple>

#include "report/html_sections.h"
#include "report/html_text.h"
#include "report/svg_plate.h"
#include "text/text.h"

namespace korvex {
namespace {

// Bounds of the page. A small map takes some six bytes a reading; a large one takes these, too, and
// tooltips.
constexpr std::size_t kMostPlates = 1000;
constexpr std::size_t kMostSmallWells = 600000;
constexpr std::size_t kMostLargeBytes = 12000000;
constexpr std::size_t kBytesAWell = 60;
constexpr std::size_t kBytesAReading = 20;
// So few plates are shown large at once, without an overview.
constexpr std::size_t kFewPlates = 4;

struct PlacedReading {
  std::uint32_t plate;  // in order of appearance
  std::int16_t replication;
  std::int16_t well;  // its number on the plate, row by row from 0
  const Reading* reading;
};

struct Plate {
  std::string name;
  const PlateFormat* format;
  std::span<const PlacedReading> readings;  // by replication, then by well
  std::vector<std::int16_t> replications;
};

bool IsValue(const Reading& reading) {
  return reading.text != Reading::kMissing;
}

std::optional<double> NumberOf(const Reading& reading) {
  return reading.text == Reading::kNumber ? std::optional(reading.number) : std::nullopt;
}

// The readings that lie on plates, by plate.
class Plates {
 public:
  explicit Plates(const ReportedReadings& reported);
  Plates(const Plates&) = delete;  // plates_ looks into placed_
  Plates& operator=(const Plates&) = delete;

  const std::vector<Plate>& All() const { return plates_; }
  std::size_t Outside() const { return outside_; }

 private:
  // Returns the plates of the layout in order of appearance.
  std::vector<std::uint32_t> PlaceReadings(const ReportedReadings& reported);

  std::vector<PlacedReading> placed_;
  std::vector<Plate> plates_;
  std::size_t outside_ = 0;  // readings of keys without a well
};

std::vector<std::uint32_t> Plates::PlaceReadings(const ReportedReadings& reported) {
  const PlateLayout& layout = *reported.layout;
  constexpr std::uint32_t kNotMet = std::numeric_limits<std::uint32_t>::max();
  std::vector<std::uint32_t> order_of(layout.format_of_plate.size(), kNotMet);
  std::vector<std::uint32_t> met;
  for (const Reading& reading : reported.readings.readings) {
    const std::optional<Well>& well = layout.well_of_key[reading.key];
    if (!well) {
      ++outside_;
      continue;
    }
    const std::uint32_t plate = layout.plate_of_key[reading.key];
    if (order_of[plate] == kNotMet) {
      order_of[plate] = static_cast<std::uint32_t>(met.size());
      met.push_back(plate);
    }
    // One number instead of row and column sorts in the order in which wells are drawn: neighbours
    // in a row follow one another and become one line.
    const int number = well->row * layout.format_of_plate[plate]->columns + well->column;
    placed_.push_back({order_of[plate], reported.ReplicationOf(reading),
                       static_cast<std::int16_t>(number), &reading});
  }
  // No two are at one place, which the layout sees to.
  std::ranges::sort(placed_, {}, [](const PlacedReading& placed) {
    return std::tuple(placed.plate, placed.replication, placed.well);
  });
  return met;
}

Plates::Plates(const ReportedReadings& reported) {
  const PlateLayout& layout = *reported.layout;
  const std::vector<std::uint32_t> met = PlaceReadings(reported);
  for (std::size_t begin = 0; begin < placed_.size();) {
    std::size_t end = begin;
    std::vector<std::int16_t> replications;
    for (; end < placed_.size() && placed_[end].plate == placed_[begin].plate; ++end) {
      const std::int16_t replication = placed_[end].replication;
      if (replications.empty() || replications.back() != replication) {
        replications.push_back(replication);
      }
    }
    // From the place in order of appearance back to the number in the layout.
    const std::uint32_t plate = met[placed_[begin].plate];
    plates_.push_back(
        {layout.plate_column ? reported.readings.columns[*layout.plate_column].texts[plate] : "",
         layout.format_of_plate[plate],
         {placed_.begin() + static_cast<std::ptrdiff_t>(begin), end - begin},
         std::move(replications)});
    begin = end;
  }
}

std::vector<DrawnWell> DrawnWells(const Plate& plate) {
  std::vector<DrawnWell> wells;
  std::uint32_t map = 0;
  for (const PlacedReading& placed : plate.readings) {
    if (placed.replication != plate.replications[map]) ++map;
    // A blank is drawn like a well that was never read: the hatching below stays visible.
    if (!IsValue(*placed.reading)) continue;
    const Well well{placed.well / plate.format->columns, placed.well % plate.format->columns};
    wells.push_back({map, well, NumberOf(*placed.reading)});
  }
  return wells;
}

void AddNumbers(const Plate& plate, std::vector<double>& numbers) {
  for (const PlacedReading& placed : plate.readings) {
    if (const auto number = NumberOf(*placed.reading)) numbers.push_back(*number);
  }
}

std::string TitleOf(const Plate& plate) {
  return plate.name.empty() ? "Plate" : "Plate " + Escaped(plate.name);
}

std::string LabelOf(const Plate& plate) {
  return TitleOf(plate) + ", " + Counted(plate.replications.size(), "replication") + " of " +
         std::to_string(plate.format->wells) + " wells";
}

// What a well shows when it is pointed at: the well, the key without its plate and well, and the
// values of all replications.
class Tooltips {
 public:
  explicit Tooltips(const ReportedReadings& reported) : reported_(reported) {}

  void Append(const Plate& plate, const PlateDrawing& drawing, std::string& page) const;

 private:
  void AppendKey(std::uint32_t key, std::string& title) const;
  void AppendValue(const Reading* reading, std::string& title) const;

  const ReportedReadings& reported_;
};

void Tooltips::Append(const Plate& plate, const PlateDrawing& drawing, std::string& page) const {
  const std::size_t maps = plate.replications.size();
  // By well and then by map, the other way round than the readings lie: a tooltip tells all
  // replications of a well together.
  std::vector<const Reading*> by_well(static_cast<std::size_t>(plate.format->wells) * maps);
  std::size_t map = 0;
  for (const PlacedReading& placed : plate.readings) {
    if (placed.replication != plate.replications[map]) ++map;
    by_well[static_cast<std::size_t>(placed.well) * maps + map] = placed.reading;
  }
  Add(page, "<g class=\"tt\">");
  std::string title;
  for (int number = 0; number < plate.format->wells; ++number) {
    const auto values = std::span(by_well).subspan(static_cast<std::size_t>(number) * maps, maps);
    const auto first = std::ranges::find_if(values, [](const Reading* r) { return r != nullptr; });
    if (first == values.end()) continue;
    const Well well{number / plate.format->columns, number % plate.format->columns};
    title = NameOf(well);
    AppendKey((*first)->key, title);
    title += ':';
    // Replications of one well may name different keys, which is worth showing: a new key is told
    // before its values.
    std::uint32_t key = (*first)->key;
    for (const Reading* reading : values) {
      if (reading != nullptr && reading->key != key) {
        key = reading->key;
        title += " /";
        AppendKey(key, title);
        title += ':';
      }
      AppendValue(reading, title);
    }
    // A title element, not a script: it shows in viewers that run no scripts, too.
    drawing.AppendTooltip(well, title, page);
  }
  Add(page, "</g>");
}

void Tooltips::AppendKey(std::uint32_t key, std::string& title) const {
  const auto& columns = reported_.readings.columns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    // Plate and well are told by the place; output columns would make a page of thousands of wells
    // several times as large.
    if (!columns[i].in_key || i == reported_.layout->well_column ||
        i == reported_.layout->plate_column) {
      continue;
    }
    title += ' ';
    title += Escaped(columns[i].Text(key));
  }
}

void Tooltips::AppendValue(const Reading* reading, std::string& title) const {
  title += ' ';
  if (reading == nullptr || reading->text == Reading::kMissing) {
    title += "–";
  } else if (reading->text == Reading::kNumber) {
    title += ShownNumber(reading->number);
  } else {
    Add(title, "&quot;", Escaped(reported_.readings.reading_texts[reading->text]), "&quot;");
  }
}

void AppendOverview(const std::vector<Plate>& plates, std::size_t shown, std::size_t large,
                    std::string& page) {
  // All plates take part in the scale, those that are not drawn, too.
  std::vector<double> numbers;
  for (const Plate& plate : plates) AddNumbers(plate, numbers);
  const ColourScale scale(std::move(numbers));
  Add(page, "<h3>All plates in one colour scale</h3>\n");
  scale.AppendLegend(page);
  Add(page, "<div class=\"overview\">\n");
  for (std::size_t i = 0; i < shown; ++i) {
    const Plate& plate = plates[i];
    const PlateDrawing drawing(*plate.format, plate.replications.size(),
                               PlateDrawing::Size::kSmall);
    const std::string caption = plate.name.empty() ? "plate" : Escaped(plate.name);
    Add(page, "<figure>");
    drawing.AppendStart(LabelOf(plate), page);
    drawing.AppendWells(DrawnWells(plate), scale, page);
    Add(page, "</svg><figcaption>");
    // Only plates that are drawn large further down have a place to go to.
    if (i < large) {
      Add(page, "<a href=\"#plate", std::to_string(i + 1), "\">", caption, "</a>");
    } else {
      Add(page, caption);
    }
    Add(page, "</figcaption></figure>\n");
  }
  Add(page, "</div>\n");
}

void AppendLargePlate(const ReportedReadings& reported, const Plate& plate, std::size_t number,
                      bool is_open, std::string& page) {
  std::vector<double> numbers;
  AddNumbers(plate, numbers);
  const std::size_t number_count = numbers.size();
  const std::vector<DrawnWell> wells = DrawnWells(plate);
  const ColourScale scale(std::move(numbers));
  const PlateDrawing drawing(*plate.format, plate.replications.size(), PlateDrawing::Size::kLarge);
  std::vector<std::string> titles;
  for (const std::int16_t replication : plate.replications) {
    titles.push_back("replication " + std::to_string(replication));
  }
  // Folded, since a browser draws only what is open: a page of hundreds of large maps stays quick.
  Add(page, "<details", is_open ? " open" : "", "><summary>", TitleOf(plate), " <small>",
      Counted(plate.replications.size(), "replication"), ", ", Counted(number_count, "number"));
  if (wells.size() > number_count) {
    Add(page, ", ", GroupedDigits(wells.size() - number_count), " other");
  }
  // The anchor lies within the folded part: browsers open what a link leads into, but not what it
  // leads to.
  Add(page, "</small></summary><div id=\"plate", std::to_string(number), "\">");
  scale.AppendLegend(page);
  Add(page, "<div class=\"scroll maps\">");
  drawing.AppendStart(LabelOf(plate), page);
  drawing.AppendWells(wells, scale, page);
  drawing.AppendLabels(titles, page);
  Tooltips(reported).Append(plate, drawing, page);
  Add(page, "</svg></div></div></details>\n");
}

// How many plates, from the first on, have room among the small maps.
std::size_t SmallPlates(const std::vector<Plate>& plates) {
  std::size_t wells = 0;
  std::size_t count = 0;
  for (; count < std::min(plates.size(), kMostPlates); ++count) {
    wells +=
        static_cast<std::size_t>(plates[count].format->wells) * plates[count].replications.size();
    if (wells > kMostSmallWells) break;
  }
  return count;
}

// The same for the large maps, whose size is that of their paths and tooltips.
std::size_t LargePlates(const std::vector<Plate>& plates) {
  std::size_t bytes = 0;
  std::size_t count = 0;
  for (; count < std::min(plates.size(), kMostPlates); ++count) {
    const Plate& plate = plates[count];
    bytes += static_cast<std::size_t>(plate.format->wells) *
             (kBytesAWell + kBytesAReading * plate.replications.size());
    if (bytes > kMostLargeBytes) break;
  }
  return count;
}

void AppendLayout(const ReportedReadings& reported, const Plates& plates, std::string& page) {
  const auto& columns = reported.readings.columns;
  const PlateLayout& layout = *reported.layout;
  Add(page, "<p>Wells are named by the column <b>", Escaped(columns[layout.well_column].name),
      "</b>, plates by ");
  if (layout.plate_column) {
    Add(page, "the column <b>", Escaped(columns[*layout.plate_column].name), "</b>");
  } else {
    Add(page, "no column, since there is one plate");
  }
  Add(page, ". ");
  if (plates.Outside() > 0) {
    Add(page, Counted(plates.Outside(), "reading"),
        " of wells that their plates do not have cannot be drawn. ");
  }
  Add(page,
      "Colours go from the 1st to the 99th percentile; what lies outside has the colour of the "
      "end.</p>\n");
}

}  // namespace

void AppendPlates(const ReportedReadings& reported, std::string& page) {
  Add(page, "<section id=\"plates\"><h2>Plates</h2>\n");
  if (!reported.layout) {
    Add(page, "<p class=\"note\">No plates are drawn. ", Escaped(reported.why_no_layout),
        " On the command line <code>--plate NAME</code> and <code>--well NAME</code> name their "
        "columns.</p></section>\n");
    return;
  }
  const Plates plates(reported);
  const std::vector<Plate>& all = plates.All();
  const std::size_t large = LargePlates(all);
  AppendLayout(reported, plates, page);
  const bool are_few = all.size() <= kFewPlates;
  if (!are_few) {
    const std::size_t shown = SmallPlates(all);
    AppendOverview(all, shown, large, page);
    Add(page, "<p class=\"caption\">Each drawing is a plate, its replications side by side.");
    if (shown < all.size()) {
      Add(page, " The first ", GroupedDigits(shown), " of ", GroupedDigits(all.size()),
          " plates are drawn.");
    }
    Add(page,
        "</p>\n<h3>Each plate in a colour scale of its own</h3>\n<p>Point at a well to see its "
        "key and values.");
    if (large < all.size()) {
      Add(page, " To keep the page small, the first ", GroupedDigits(large), " of ",
          GroupedDigits(all.size()), " plates are drawn large.");
    }
    Add(page, "</p>\n");
  }
  Add(page, "<div class=\"large\">\n");
  for (std::size_t i = 0; i < large; ++i) {
    AppendLargePlate(reported, all[i], i + 1, are_few, page);
  }
  Add(page, "</div></section>\n");
}

}  // namespace korvex
