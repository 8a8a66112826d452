// Charts of the report: points over two axes, bars, and strips of control wells. Sizes are pixels.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace korvex {

// What an axis shows, with round numbers on it.
class Axis {
 public:
  // From the smallest to the largest of the values, of which there is one at least, with a little
  // room at both ends.
  explicit Axis(const std::vector<double>& values);
  // Exactly from `low` to `high`.
  Axis(double low, double high);

  // From 0 at the low end to 1.
  double Place(double value) const;
  // In ascending order; none when numbers of that size have no room for steps between them.
  const std::vector<double>& Ticks() const { return ticks_; }

 private:
  void FindTicks();

  double low_;
  double high_;
  std::vector<double> ticks_;
};

// Pairs of values over one axis for both, with the line on which they are equal. Points that fall
// on one spot are drawn once, the bolder the more they are, so that a chart stays small however
// many there are, and no point is left out. Labels are markup.
void AppendScatter(const std::vector<std::pair<double, double>>& points, const Axis& axis,
                   const std::string& x_label, const std::string& y_label, std::string& page);

// Counts of equally wide classes from 0 to `end`; the last one counts what lies above.
// At least one class, of which one is not 0. `x_label` is markup.
void AppendHistogram(const std::vector<std::size_t>& counts, double end, const std::string& x_label,
                     std::string& page);

// The control wells of a plate in one replication.
struct ControlStrip {
  std::string label;    // markup; empty where the strip before has the same
  std::string tooltip;  // markup
  std::vector<double> low;
  std::vector<double> high;
};
// One chart, a strip for each element, at least one; low and high beside each other.
void AppendStrips(std::span<const ControlStrip> strips, const Axis& axis, std::string& page);

}  // namespace korvex
