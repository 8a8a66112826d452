#include "report/svg_plate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "report/html_text.h"
#include "report/statistics.h"

namespace korvex {
namespace {

constexpr std::size_t kMapsALine = 4;
constexpr double kLowest = 0.01;
constexpr double kHighest = 0.99;
// Of a small map in any format: 12 wells of 4, 24 of 2 or 48 of 1 pixel.
constexpr int kSmallWidth = 48;
// Sizes of a hatch, in pixels.
constexpr int kPixels[] = {1, 2, 4, 7, 13, 24};

int LargePixels(const PlateFormat& format) {
  return format.columns <= 12 ? 24 : format.columns <= 24 ? 13 : 7;
}

// Coordinates are whole or halves.
std::string Coordinate(double value) {
  return ShownNumber(value);
}

// From linear light to a byte of sRGB by the curve of IEC 61966-2-1. What lies outside the gamut
// takes the nearest byte.
int Channel(double linear) {
  const double value = std::clamp(linear, 0.0, 1.0);
  const double encoded =
      value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
  return static_cast<int>(std::lround(255 * encoded));
}

}  // namespace

ColourScale::ColourScale(std::vector<double> values) : has_values_(!values.empty()) {
  if (!has_values_) return;
  std::ranges::sort(values);
  low_ = Percentile(values, kLowest);
  high_ = Percentile(values, kHighest);
}

int ColourScale::ClassOf(double value) const {
  if (high_ <= low_) return kClasses / 2;
  // Halves, since the extent of two large numbers may be out of range.
  const double share = (value / 2 - low_ / 2) / (high_ / 2 - low_ / 2);
  return static_cast<int>(std::clamp(share * kClasses, 0.0, kClasses - 1.0));
}

// In the OKLab space (Ottosson, 2020), where equal steps of L look equally large: L rises from dark
// to light while the hue turns from violet over blue and green to yellow.
std::string ColourScale::Colour(int of_class) {
  const double share = of_class / (kClasses - 1.0);
  const double lightness = 0.28 + 0.64 * share;
  const double chroma = 0.115 + 0.05 * share;
  const double hue = (302 - 196 * share) * std::numbers::pi / 180;
  const double a = chroma * std::cos(hue);
  const double b = chroma * std::sin(hue);
  // To the cone responses, whose cubes are linear, and from these to linear sRGB: the two matrices
  // as published.
  const double l = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
  const double m = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
  const double s = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
  const int channels[] = {Channel(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
                          Channel(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
                          Channel(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s)};
  std::string colour = "#";
  for (const int channel : channels) {
    colour += "0123456789abcdef"[channel / 16];
    colour += "0123456789abcdef"[channel % 16];
  }
  return colour;
}

void ColourScale::AppendLegend(std::string& page) const {
  constexpr int kStep = 7;
  constexpr int kWidth = kClasses * kStep;
  Add(page, "<div class=\"legend\">");
  if (has_values_) {
    Add(page, "<svg role=\"img\" aria-label=\"Colour scale from ", ShownFigure(low_), " to ",
        ShownFigure(high_), "\" viewBox=\"-38 0 ", std::to_string(kWidth + 76), " 26\" width=\"",
        std::to_string(kWidth + 76), "\" height=\"26\"><g stroke-width=\"10\">");
    for (int i = 0; i < kClasses; ++i) {
      // By class rather than by a gradient: the strip shows the very steps that the wells have.
      Add(page, "<path class=\"c", std::to_string(i), "\" d=\"M", std::to_string(i * kStep), " 5h",
          std::to_string(kStep), "\"/>");
    }
    Add(page, "</g><g font-size=\"10\" text-anchor=\"middle\">");
    const auto label = [&page](int x, double value) {
      Add(page, "<text x=\"", std::to_string(x), "\" y=\"22\">", ShownFigure(value), "</text>");
    };
    label(kWidth / 2, low_ / 2 + high_ / 2);
    if (high_ > low_) {
      label(0, low_);
      label(kWidth, high_);
    }
    Add(page, "</g></svg>");
  }
  Add(page,
      "<span class=\"key\"><svg width=\"13\" height=\"13\" aria-hidden=\"true\"><rect "
      "width=\"13\" height=\"13\" fill=\"url(#hatch1)\"/></svg> no reading</span>"
      "<span class=\"key\"><svg width=\"13\" height=\"13\" viewBox=\"0 0 1 1\" "
      "aria-hidden=\"true\"><path class=\"nb\" d=\"M0 .5h1\"/><path class=\"nx\" "
      "d=\"M.2 .2l.6 .6m0-.6l-.6 .6\"/></svg> no number</span></div>\n");
}

PlateDrawing::PlateDrawing(const PlateFormat& format, std::size_t maps, Size size)
    : format_(format),
      maps_(maps),
      is_large_(size == Size::kLarge),
      pixels_(is_large_ ? LargePixels(format) : kSmallWidth / format.columns),
      maps_a_line_(std::min(maps, kMapsALine)) {
  // In wells: room for letters on the left; above for the title and the numbers of columns.
  const double pixels = pixels_;
  margin_ = is_large_ ? Point{std::ceil(22 / pixels), std::ceil(34 / pixels)}
                      : Point{std::ceil(3 / pixels), std::ceil(3 / pixels)};
}

PlateDrawing::Point PlateDrawing::Corner(std::size_t map) const {
  return {margin_.x + static_cast<double>(map % maps_a_line_) * (margin_.x + format_.columns),
          margin_.y + static_cast<double>(map / maps_a_line_) * (margin_.y + format_.rows)};
}

void PlateDrawing::AppendStart(const std::string& label, std::string& page) const {
  const std::size_t lines = (maps_ + maps_a_line_ - 1) / maps_a_line_;
  const Point end = Corner(lines * maps_a_line_ - 1);
  const double width = end.x + format_.columns;
  const double height = end.y + format_.rows;
  // The view box counts wells, width and height count pixels: the browser scales, and paths stay
  // short whole numbers.
  Add(page, "<svg role=\"img\" aria-label=\"", label, "\" viewBox=\"0 0 ", Coordinate(width), " ",
      Coordinate(height), "\" width=\"", Coordinate(width * pixels_), "\" height=\"",
      Coordinate(height * pixels_), "\"><path class=\"pl\" fill=\"url(#hatch",
      std::to_string(pixels_), ")\" d=\"");
  // The ground of all maps is hatched; wells that have a value are drawn over it, so that a well
  // without a reading costs no byte.
  const std::string columns = std::to_string(format_.columns);
  for (std::size_t map = 0; map < maps_; ++map) {
    const Point corner = Corner(map);
    Add(page, "M", Coordinate(corner.x), " ", Coordinate(corner.y), "h", columns, "v",
        std::to_string(format_.rows), "h-", columns, "z");
  }
  Add(page, "\"/>");
}

void PlateDrawing::AppendLabels(const std::vector<std::string>& titles, std::string& page) const {
  const double pixels = pixels_;
  // Fonts are measured in wells, too, and so divided by the pixels of a well.
  const std::string size = Coordinate(std::round(1000 / pixels) / 100);    // 10 pixels
  const std::string larger = Coordinate(std::round(1200 / pixels) / 100);  // 12 pixels
  // As many labels as there is room for.
  const int row_step = pixels_ < 11 ? 2 : 1;
  const int column_step = pixels_ < 11 ? 3 : pixels_ < 18 ? 2 : 1;
  Add(page, "<g class=\"lb\" font-size=\"", size, "\">");
  for (std::size_t map = 0; map < maps_; ++map) {
    const Point corner = Corner(map);
    AppendGrid(corner, page);
    Add(page, "<text class=\"mt\" font-size=\"", larger, "\" x=\"", Coordinate(corner.x), "\" y=\"",
        Coordinate(corner.y - std::round(1800 / pixels) / 100), "\">", titles[map], "</text>");
    for (int column = 0; column < format_.columns; column += column_step) {
      Add(page, "<text x=\"", Coordinate(corner.x + column + 0.5), "\" y=\"",
          Coordinate(corner.y - std::round(400 / pixels) / 100), "\">", std::to_string(column + 1),
          "</text>");
    }
    for (int row = 0; row < format_.rows; row += row_step) {
      const std::string name = NameOf(Well{row, 0});
      Add(page, "<text class=\"rl\" x=\"", Coordinate(corner.x - std::round(400 / pixels) / 100),
          "\" y=\"", Coordinate(corner.y + row + 0.5), "\">", name.substr(0, name.size() - 2),
          "</text>");
    }
  }
  Add(page, "</g>");
}

// Parts the wells, which have runs of equal colour in one line.
void PlateDrawing::AppendGrid(Point corner, std::string& page) const {
  const std::string across = 'h' + std::to_string(format_.columns);
  const std::string down = 'v' + std::to_string(format_.rows);
  Add(page, "<path class=\"gl\" d=\"");
  for (int row = 1; row < format_.rows; ++row) {
    Add(page, "M", Coordinate(corner.x), " ", Coordinate(corner.y + row), across);
  }
  for (int column = 1; column < format_.columns; ++column) {
    Add(page, "M", Coordinate(corner.x + column), " ", Coordinate(corner.y), down);
  }
  Add(page, "\"/>");
}

void PlateDrawing::AppendWells(const std::vector<DrawnWell>& wells, const ColourScale& scale,
                               std::string& page) const {
  // One path for each colour, since an element for each well would take ten times the bytes and
  // make the browser slow. Wells are lines as thick as a well, which are shorter to write than
  // squares.
  constexpr std::size_t kNoNumber = ColourScale::kClasses;
  struct Path {
    std::string commands;
    Point end;    // of the last line
    int run = 0;  // wells that the last line is long
  };
  std::array<Path, kNoNumber + 1> paths;
  std::string crosses;
  const auto end_run = [](Path& path) {
    if (path.run > 0) path.commands += 'h' + std::to_string(path.run);
    path.run = 0;
  };
  for (const DrawnWell& drawn : wells) {
    const Point corner = Corner(drawn.map);
    const Point at{corner.x + drawn.well.column, corner.y + drawn.well.row};
    Path& path =
        paths[drawn.value ? static_cast<std::size_t>(scale.ClassOf(*drawn.value)) : kNoNumber];
    if (!drawn.value) {
      Add(crosses, "M", Coordinate(at.x + 0.2), " ", Coordinate(at.y + 0.2), "l.6 .6m0-.6l-.6 .6");
    }
    // Neighbours in a row are one line; else the pen moves by the shorter of both ways to say it.
    if (path.run == 0 || path.end.x != at.x || path.end.y != at.y) {
      end_run(path);
      // Absolute at the start of a path, relative to the end of the last line from then on. A minus
      // sign parts two numbers by itself.
      const bool is_first = path.commands.empty();
      Add(path.commands, is_first ? "M" : "m", Coordinate(at.x - (is_first ? 0 : path.end.x)));
      const double down = at.y - (is_first ? 0 : path.end.y);
      Add(path.commands, down < 0 ? "" : " ", Coordinate(down));
    }
    ++path.run;
    path.end = {at.x + 1, at.y};
  }
  // A line lies on both sides of its path: half a well further down it covers its row.
  Add(page, "<g class=\"w\" transform=\"translate(0 .5)\">");
  for (std::size_t i = 0; i < paths.size(); ++i) {
    end_run(paths[i]);
    if (paths[i].commands.empty()) continue;
    Add(page, "<path class=\"", i == kNoNumber ? "nb" : "c" + std::to_string(i), "\" d=\"",
        paths[i].commands, "\"/>");
  }
  Add(page, "</g>");
  if (!crosses.empty()) Add(page, "<path class=\"nx\" d=\"", crosses, "\"/>");
}

void PlateDrawing::AppendTooltip(Well well, const std::string& title, std::string& page) const {
  Add(page, "<path d=\"");
  Point last{0, 0};
  for (std::size_t map = 0; map < maps_; ++map) {
    const Point corner = Corner(map);
    const Point at{corner.x + well.column, corner.y + well.row};
    // After "z" the pen is back at the corner, from which the next "m" counts.
    Add(page, map == 0 ? "M" : "m", Coordinate(at.x - last.x), " ", Coordinate(at.y - last.y),
        "h1v1h-1z");
    last = at;
  }
  Add(page, "\"><title>", title, "</title></path>");
}

void PlateDrawing::AppendStyle(std::string& page) {
  for (int i = 0; i < ColourScale::kClasses; ++i) {
    Add(page, ".c", std::to_string(i), "{stroke:", ColourScale::Colour(i), "}");
  }
  Add(page, "\n");
}

void PlateDrawing::AppendPatterns(std::string& page) {
  // Of no size instead of not displayed: patterns in what is not displayed are not drawn by all
  // browsers. One pattern for each size of a well, so that lines are a pixel wide in all drawings.
  Add(page, "<svg class=\"patterns\" width=\"0\" height=\"0\" aria-hidden=\"true\"><defs>");
  for (const int pixels : kPixels) {
    // Lines of one pixel at every fourth; a well is a unit.
    const std::string unit = Coordinate(std::round(1000000.0 / pixels) / 1000000);
    Add(page, "<pattern id=\"hatch", std::to_string(pixels),
        "\" patternUnits=\"userSpaceOnUse\" width=\"4\" height=\"4\" patternTransform=\"scale(",
        unit,
        ") rotate(45)\"><path class=\"hb\" d=\"M0 0h4v4h-4z\"/>"
        "<path class=\"hl\" d=\"M0 2h4\"/></pattern>");
  }
  Add(page, "</defs></svg>\n");
}

}  // namespace korvex
