// The statistics of the report. A result that does not exist (too few values, no spread, out of the
// range of numbers) is none, never an infinite one or a NaN.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace korvex {

std::optional<double> Mean(std::span<const double> values);
// With n - 1; needs two values.
std::optional<double> SampleDeviation(std::span<const double> values);
// s / |mean|, as a fraction.
std::optional<double> CoefficientOfVariation(std::span<const double> values);

// Of values in ascending order, at least one: the value at the place (n - 1) * fraction, counted
// from 0, between two values on the line through them (type 7 of Hyndman and Fan, 1996).
double Percentile(std::span<const double> sorted, double fraction);

// From 1; equal values share the mean of their ranks.
std::vector<double> AverageRanks(std::span<const double> values);
// Both need two points and a spread in `x` and in `y`, which are equally long.
std::optional<double> PearsonCorrelation(std::span<const double> x, std::span<const double> y);
std::optional<double> SpearmanCorrelation(std::span<const double> x, std::span<const double> y);

// The wells of a control on one plate.
struct ControlSample {
  std::size_t count = 0;
  std::optional<double> mean;
  std::optional<double> deviation;
};
// Of one value there is a mean but no deviation.
ControlSample SampleOf(std::span<const double> values);

// 1 - 3 (s_high + s_low) / |mean_high - mean_low|: Zhang, Chung and Oldenburg, 1999.
std::optional<double> ZPrime(const ControlSample& low, const ControlSample& high);
// (|mean_high - mean_low| - 3 (s_high + s_low)) / s_high: Sittampalam and others, 1997.
std::optional<double> SignalWindow(const ControlSample& low, const ControlSample& high);

}  // namespace korvex
