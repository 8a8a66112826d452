// Drawings of plates: a square per well in the colour of its value, the replications of a plate
// side by side.
//
// A drawing's unit is one well. Colours are classes of the style sheet ("c0" ...), and a path holds
// all wells of a class, which takes some six bytes a well.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/plate_layout.h"

namespace korvex {

// Colours from dark violet over blue and green to yellow, evenly rising in lightness, so that order
// shows to colour-blind readers and in black-and-white print.
//
// A scale goes from the 1st to the 99th percentile of its values, so that one outlier does not take
// the colours from all others; what lies outside has the colour of the end.
class ColourScale {
 public:
  static constexpr int kClasses = 32;

  // In any order; none for a plate without numbers, whose scale has a legend without colours.
  explicit ColourScale(std::vector<double> values);

  bool HasValues() const { return has_values_; }
  double Low() const { return low_; }
  double High() const { return high_; }
  // The middle class where the scale has no extent.
  int ClassOf(double value) const;

  // "#3b0f70".
  static std::string Colour(int of_class);
  // The strip of all colours with its ends and middle, and what the other signs mean.
  void AppendLegend(std::string& page) const;

 private:
  bool has_values_ = false;
  double low_ = 0;
  double high_ = 0;
};

// A well of a plate in one of its replications.
struct DrawnWell {
  std::uint32_t map = 0;  // its replication's place among those of the plate
  Well well;
  std::optional<double> value;  // none for what is no number
};

// What the replications of a plate are drawn into.
class PlateDrawing {
 public:
  enum class Size { kSmall, kLarge };

  // `maps` is the number of replications, at least one; `format` must outlive the drawing.
  // AppendStart comes first, what is appended later lies on top, and the caller ends the drawing
  // with "</svg>".
  PlateDrawing(const PlateFormat& format, std::size_t maps, Size size);

  // The beginning of the drawing: the wells without a reading, hatched. `label` is its name for
  // those who do not see it.
  void AppendStart(const std::string& label, std::string& page) const;
  // Rows and columns of a large drawing, and over each map its title.
  void AppendLabels(const std::vector<std::string>& titles, std::string& page) const;
  // In any order; wells of one map that follow one another in a row take the fewest bytes.
  void AppendWells(const std::vector<DrawnWell>& wells, const ColourScale& scale,
                   std::string& page) const;
  // One shape over a well in the maps from the first to the last, which shows `title` (markup).
  void AppendTooltip(Well well, const std::string& title, std::string& page) const;

  // The rules of the style sheet and the patterns that all drawings use.
  static void AppendStyle(std::string& page);
  static void AppendPatterns(std::string& page);

 private:
  struct Point {
    double x;
    double y;
  };

  // The upper left well of a map, four maps a line.
  Point Corner(std::size_t map) const;
  void AppendGrid(Point corner, std::string& page) const;

  const PlateFormat& format_;
  std::size_t maps_;
  bool is_large_;
  int pixels_;  // a well
  std::size_t maps_a_line_;
  Point margin_;  // left of and above each map
};

}  // namespace korvex
