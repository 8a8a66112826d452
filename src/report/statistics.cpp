#include "report/statistics.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace korvex {
namespace {

std::optional<double> IfFinite(double value) {
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<double> Mean(std::span<const double> values) {
  if (values.empty()) return std::nullopt;
  // Sums of numbers near the end of the range overflow: then there is no mean.
  return IfFinite(std::accumulate(values.begin(), values.end(), 0.0) /
                  static_cast<double>(values.size()));
}

std::optional<double> SampleDeviation(std::span<const double> values) {
  const std::optional<double> mean = Mean(values);
  if (values.size() < 2 || !mean) return std::nullopt;
  // The mean of equal values may be off by a rounding, which is no spread.
  if (std::ranges::all_of(values, [&](double value) { return value == values.front(); })) return 0;
  // Two passes: the sum of squares less the square of the sum would cancel all digits of values
  // that are large and close together.
  double squares = 0;
  for (const double value : values) squares += (value - *mean) * (value - *mean);
  return IfFinite(std::sqrt(squares / static_cast<double>(values.size() - 1)));
}

std::optional<double> CoefficientOfVariation(std::span<const double> values) {
  const std::optional<double> mean = Mean(values);
  const std::optional<double> deviation = SampleDeviation(values);
  if (!mean || !deviation) return std::nullopt;
  // Infinite or NaN for a mean of 0.
  return IfFinite(*deviation / std::abs(*mean));
}

double Percentile(std::span<const double> sorted, double fraction) {
  const double place = static_cast<double>(sorted.size() - 1) * fraction;
  const std::size_t below = static_cast<std::size_t>(place);
  const std::size_t above = std::min(below + 1, sorted.size() - 1);
  return std::lerp(sorted[below], sorted[above], place - static_cast<double>(below));
}

std::vector<double> AverageRanks(std::span<const double> values) {
  // With their places, since values side by side sort quicker than through an index.
  std::vector<std::pair<double, std::size_t>> sorted;
  sorted.reserve(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) sorted.emplace_back(values[i], i);
  std::ranges::sort(sorted);
  std::vector<double> ranks(values.size());
  for (std::size_t first = 0; first < sorted.size();) {
    std::size_t end = first + 1;
    while (end < sorted.size() && sorted[end].first == sorted[first].first) ++end;
    // The ranks first + 1 to end have this mean.
    const double rank = static_cast<double>(first + 1 + end) / 2;
    for (; first < end; ++first) ranks[sorted[first].second] = rank;
  }
  return ranks;
}

std::optional<double> PearsonCorrelation(std::span<const double> x, std::span<const double> y) {
  const std::optional<double> deviation_x = SampleDeviation(x);
  const std::optional<double> deviation_y = SampleDeviation(y);
  if (!deviation_x || !deviation_y || *deviation_x == 0 || *deviation_y == 0) return std::nullopt;
  const double mean_x = *Mean(x);
  const double mean_y = *Mean(y);
  // Standardised first, so that products of large or small numbers stay in range.
  double products = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    products += (x[i] - mean_x) / *deviation_x * ((y[i] - mean_y) / *deviation_y);
  }
  // Roundings may carry a perfect correlation beyond 1.
  return std::clamp(products / static_cast<double>(x.size() - 1), -1.0, 1.0);
}

std::optional<double> SpearmanCorrelation(std::span<const double> x, std::span<const double> y) {
  // Not the short formula of the differences of ranks, which is wrong when values are equal.
  return PearsonCorrelation(AverageRanks(x), AverageRanks(y));
}

ControlSample SampleOf(std::span<const double> values) {
  return {values.size(), Mean(values), SampleDeviation(values)};
}

std::optional<double> ZPrime(const ControlSample& low, const ControlSample& high) {
  if (!low.deviation || !high.deviation) return std::nullopt;
  // Equal means divide by 0: then there is no Z'. The controls may lie either way round.
  const double range = std::abs(*high.mean - *low.mean);
  return IfFinite(1 - 3 * (*high.deviation + *low.deviation) / range);
}

std::optional<double> SignalWindow(const ControlSample& low, const ControlSample& high) {
  if (!low.deviation || !high.deviation) return std::nullopt;
  const double range = std::abs(*high.mean - *low.mean);
  // By the spread of the high control alone, as its authors define it; none when that is 0.
  return IfFinite((range - 3 * (*high.deviation + *low.deviation)) / *high.deviation);
}

}  // namespace korvex
