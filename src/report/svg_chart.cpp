#include "report/svg_chart.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "report/html_text.h"
#include "report/statistics.h"
#include "text/text.h"

namespace korvex {
namespace {

// Tenths of a pixel cannot be told apart; longer numbers only make the page larger.
std::string Pixel(double value) {
  return ShownNumber(std::round(value * 10) / 10);
}
std::string Pixel(int value) {
  return std::to_string(value);
}

// The area of a chart inside its labels, y from the top.
struct Area {
  int left;
  int top;
  int width;
  int height;

  int Right() const { return left + width; }
  int Bottom() const { return top + height; }
  int X(double place) const { return left + static_cast<int>(std::lround(place * width)); }
  int Y(double place) const { return Bottom() - static_cast<int>(std::lround(place * height)); }
};

void AppendSvgStart(const std::string& label, int width, int height, std::string& page) {
  const std::string size = Pixel(width) + ' ' + Pixel(height);
  Add(page, "<svg class=\"chart\" role=\"img\" aria-label=\"", label, "\" viewBox=\"0 0 ", size,
      "\" width=\"", Pixel(width), "\" height=\"", Pixel(height), "\">");
}

void AppendFrame(const Area& area, std::string& page) {
  Add(page, "<path class=\"ax\" d=\"M", Pixel(area.left), " ", Pixel(area.top), "v",
      Pixel(area.height), "h", Pixel(area.width), "\"/>");
}

void AppendText(int x, int y, const char* anchor, const std::string& text, std::string& page) {
  Add(page, "<text x=\"", Pixel(x), "\" y=\"", Pixel(y), "\" text-anchor=\"", anchor, "\">", text,
      "</text>");
}

void AppendXTicks(const Axis& axis, const Area& area, std::string& page) {
  for (const double tick : axis.Ticks()) {
    const int x = area.X(axis.Place(tick));
    Add(page, "<path class=\"ax\" d=\"M", Pixel(x), " ", Pixel(area.Bottom()), "v4\"/>");
    AppendText(x, area.Bottom() + 16, "middle", ShownNumber(tick), page);
  }
}

void AppendYTicks(const Axis& axis, const Area& area, std::string& page) {
  for (const double tick : axis.Ticks()) {
    const int y = area.Y(axis.Place(tick));
    Add(page, "<path class=\"gr\" d=\"M", Pixel(area.left - 4), " ", Pixel(y), "h",
        Pixel(area.width + 4), "\"/>");
    AppendText(area.left - 7, y + 4, "end", ShownNumber(tick), page);
  }
}

// Dots at whole pixels as lines of no length with round ends, in one path.
class Dots {
 public:
  void Add(int x, int y) { path_ += 'M' + std::to_string(x) + ' ' + std::to_string(y) + "h0"; }
  void AppendTo(const char* of_class, std::string& page) const {
    if (!path_.empty()) korvex::Add(page, "<path class=\"", of_class, "\" d=\"", path_, "\"/>");
  }

 private:
  std::string path_;
};

}  // namespace

Axis::Axis(const std::vector<double>& values) {
  const auto [least, most] = std::ranges::minmax_element(values);
  // A fraction of the halves, since the extent of two large numbers may be out of range.
  double room = (*most / 2 - *least / 2) * 0.06;
  // Equal values still need an axis of some length.
  if (room == 0) room = *most == 0 ? 1 : std::abs(*most) * 0.05;
  // The room must not lead beyond the largest number there is.
  low_ = std::max(*least - room, -std::numeric_limits<double>::max());
  high_ = std::min(*most + room, std::numeric_limits<double>::max());
  FindTicks();
}

Axis::Axis(double low, double high) : low_(low), high_(high) {
  FindTicks();
}

double Axis::Place(double value) const {
  return std::clamp((value / 2 - low_ / 2) / (high_ / 2 - low_ / 2), 0.0, 1.0);
}

// At multiples of 1, 2 or 5 times a power of ten, four or so.
void Axis::FindTicks() {
  // Divided before they are subtracted, since the extent may be out of range.
  const double rough = high_ / 4 - low_ / 4;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  const double share = rough / power;
  const double step = (share < 1.5 ? 1 : share < 3.5 ? 2 : share < 7.5 ? 5 : 10) * power;
  const double first = std::ceil(low_ / step);
  const double last = std::floor(high_ / step);
  if (!(last - first < 20)) return;  // the axis is too short or too long for its numbers
  // Multiplied each time: adding the step up would add its rounding up, too.
  for (double i = first; i <= last; ++i) ticks_.push_back(i * step);
}

void AppendScatter(const std::vector<std::pair<double, double>>& points, const Axis& axis,
                   const std::string& x_label, const std::string& y_label, std::string& page) {
  constexpr Area kArea{66, 8, 200, 200};
  constexpr std::size_t kSeveral = 3;
  constexpr std::size_t kMany = 10;
  // One count a pixel: what is drawn is bounded by the area, not by the number of points.
  std::vector<std::size_t> counts(static_cast<std::size_t>((kArea.width + 1) * (kArea.height + 1)));
  for (const auto& [x, y] : points) {
    const int spot = (kArea.Y(axis.Place(y)) - kArea.top) * (kArea.width + 1) +
                     kArea.X(axis.Place(x)) - kArea.left;
    ++counts[static_cast<std::size_t>(spot)];
  }
  Dots one;
  Dots several;
  Dots many;
  for (int spot = 0; const std::size_t count : counts) {
    const int x = kArea.left + spot % (kArea.width + 1);
    const int y = kArea.top + spot / (kArea.width + 1);
    ++spot;
    if (count > 0) (count >= kMany ? many : count >= kSeveral ? several : one).Add(x, y);
  }
  AppendSvgStart(y_label + " against " + x_label, kArea.Right() + 14, kArea.Bottom() + 42, page);
  // What comes later lies on top: grid, axes, line of equality, dots.
  AppendYTicks(axis, kArea, page);
  AppendXTicks(axis, kArea, page);
  AppendFrame(kArea, page);
  Add(page, "<path class=\"eq\" d=\"M", Pixel(kArea.left), " ", Pixel(kArea.Bottom()), "L",
      Pixel(kArea.Right()), " ", Pixel(kArea.top), "\"/>");
  one.AppendTo("d1", page);
  several.AppendTo("d2", page);
  many.AppendTo("d3", page);
  AppendText(kArea.left + kArea.width / 2, kArea.Bottom() + 36, "middle", x_label, page);
  Add(page, "<text text-anchor=\"middle\" transform=\"translate(10 ",
      Pixel(kArea.top + kArea.height / 2), ") rotate(-90)\">", y_label, "</text></svg>");
}

void AppendHistogram(const std::vector<std::size_t>& counts, double end, const std::string& x_label,
                     std::string& page) {
  constexpr Area kArea{58, 10, 560, 180};
  const Axis x_axis(0, end);
  // A little room above the highest bar.
  const Axis y_axis(0, static_cast<double>(*std::ranges::max_element(counts)) * 1.05);
  AppendSvgStart("Number of keys by " + x_label, kArea.Right() + 14, kArea.Bottom() + 42, page);
  AppendYTicks(y_axis, kArea, page);
  const double width = static_cast<double>(kArea.width) / static_cast<double>(counts.size());
  // The rest has no place on the axis.
  Area on_axis = kArea;
  on_axis.width -= static_cast<int>(std::lround(width));
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] == 0) continue;
    const double x = kArea.left + width * static_cast<double>(i);
    const double height = kArea.height * y_axis.Place(static_cast<double>(counts[i]));
    const bool is_rest = i + 1 == counts.size();
    // At least one pixel high, so that a single key among many thousands is seen; one pixel
    // narrower than its class, so that bars stay apart.
    Add(page, "<path class=\"", is_rest ? "br" : "ba", "\" d=\"M", Pixel(x), " ",
        Pixel(kArea.Bottom()), "v-", Pixel(std::max(height, 1.0)), "h", Pixel(width - 1), "V",
        Pixel(kArea.Bottom()), "z\"><title>", GroupedDigits(counts[i]), "</title></path>");
  }
  AppendXTicks(x_axis, on_axis, page);
  AppendFrame(kArea, page);
  AppendText(kArea.Right(), kArea.Bottom() + 36, "end", "more", page);
  AppendText(kArea.left + kArea.width / 2, kArea.Bottom() + 36, "middle", x_label, page);
  Add(page, "</svg>");
}

namespace {

// The wells of one control at `x`, each height once, and the mean of all.
void AddWells(const std::vector<double>& values, int x, const Axis& axis, const Area& area,
              Dots& dots, std::string& means) {
  if (const auto mean = Mean(values)) {
    Add(means, "M", Pixel(x - 4), " ", Pixel(area.Y(axis.Place(*mean))), "h8");
  }
  // Dots at one height would only lie on each other; a page with many wells stays small.
  std::set<int> heights;
  for (const double value : values) heights.insert(area.Y(axis.Place(value)));
  for (const int y : heights) dots.Add(x, y);
}

}  // namespace

void AppendStrips(std::span<const ControlStrip> strips, const Axis& axis, std::string& page) {
  constexpr int kWidth = 480;  // of few strips together, which are wider then
  constexpr int kApart = 4;
  const int count = static_cast<int>(strips.size());
  const int strip_width = std::clamp(kWidth / count, 18, 60);
  const Area area{64, 8, strip_width * count, 170};
  // Bytes of markup, and so rather too much than too little room for the slanted labels.
  std::size_t longest = 0;
  for (const ControlStrip& strip : strips) longest = std::max(longest, strip.label.size());
  const int labels = std::min(24 + 5 * static_cast<int>(longest), 110);
  AppendSvgStart("Control wells by plate and replication", area.Right() + 10,
                 area.Bottom() + labels, page);
  AppendYTicks(axis, area, page);
  AppendFrame(area, page);
  Dots low;
  Dots high;
  std::string means;
  std::string tooltips;
  int left = area.left;
  for (const ControlStrip& strip : strips) {
    const int middle = left + strip_width / 2;
    if (!strip.label.empty()) {
      Add(page, "<path class=\"gr\" d=\"M", Pixel(left), " ", Pixel(area.top), "V",
          Pixel(area.Bottom() + 5), "\"/><text text-anchor=\"end\" transform=\"translate(",
          Pixel(middle + kApart), " ", Pixel(area.Bottom() + 12), ") rotate(-50)\">", strip.label,
          "</text>");
    }
    // Beside the middle, so that low and high stay apart where they meet.
    AddWells(strip.low, middle - kApart, axis, area, low, means);
    AddWells(strip.high, middle + kApart, axis, area, high, means);
    Add(tooltips, "<path d=\"M", Pixel(left), " ", Pixel(area.top), "h", Pixel(strip_width), "v",
        Pixel(area.height), "h-", Pixel(strip_width), "z\"><title>", strip.tooltip,
        "</title></path>");
    left += strip_width;
  }
  // Means over the dots, and over both what reacts to the pointer.
  low.AppendTo("lo", page);
  high.AppendTo("hi", page);
  Add(page, "<path class=\"mn\" d=\"", means, "\"/><g class=\"tt\">", tooltips, "</g></svg>");
}

}  // namespace korvex
