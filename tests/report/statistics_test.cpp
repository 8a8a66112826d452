#include "report/statistics.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::Optional;

// What SciPy 1.10.1 and NumPy 1.24.2 gave, printed by repr(): numpy.mean, numpy.std(ddof=1) and
// numpy.percentile(.., [0, 1, 25, 50, 90, 99, 100]) of these values.
TEST(Statistics, AgreeWithNumpyOnOneSample) {
  const struct {
    std::vector<double> values;
    double mean, deviation, variation;
    std::vector<double> percentiles;
  } samples[] = {
      {{0.71, 0.753, 0.694, 0.044, 0.72, 0.041},
       0.4936666666666667,
       0.35000609518502196,
       0.7089927653984239,
       {0.041, 0.04115, 0.20649999999999996, 0.702, 0.7364999999999999, 0.75135, 0.753}},
      {{3, 1, 4, 1, 5, 9, 2, 6, 5, 3.5},
       3.95,
       2.4545875417267156,
       0.6214145675257507,
       {1, 1, 2.25, 3.75, 6.299999999999999, 8.73, 9}},
      {{-2, -3.5},
       -2.75,
       1.0606601717798212,
       0.385694607919935,
       {-3.5, -3.485, -3.125, -2.75, -2.15, -2.015, -2}},
      {{5, 5, 5}, 5, 0, 0, {5, 5, 5, 5, 5, 5, 5}},
  };
  for (auto [values, mean, deviation, variation, percentiles] : samples) {
    EXPECT_DOUBLE_EQ(Mean(values).value(), mean);
    EXPECT_DOUBLE_EQ(SampleDeviation(values).value(), deviation);
    EXPECT_DOUBLE_EQ(CoefficientOfVariation(values).value(), variation);
    std::ranges::sort(values);
    auto expected = percentiles.begin();
    for (const double fraction : {0.0, 0.01, 0.25, 0.5, 0.9, 0.99, 1.0}) {
      EXPECT_DOUBLE_EQ(Percentile(values, fraction), *expected++) << fraction;
    }
  }
}

// scipy.stats.rankdata, pearsonr and spearmanr; the second pair has ties in both.
TEST(Statistics, AgreeWithScipyOnPairs) {
  const std::vector<double> ties = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3.5};
  EXPECT_THAT(AverageRanks(ties), ElementsAre(4, 1.5, 6, 1.5, 7.5, 10, 3, 9, 7.5, 5));
  const std::vector<double> x = {0.71, 0.753, 0.694, 0.044, 0.72, 0.041};
  const std::vector<double> y = {0.69, 0.74, 0.702, 0.036, 0.72, 0.05};
  EXPECT_DOUBLE_EQ(PearsonCorrelation(x, y).value(), 0.9994903486494183);
  EXPECT_DOUBLE_EQ(SpearmanCorrelation(x, y).value(), 0.8857142857142858);
  const std::vector<double> more_ties = {2, 7, 1, 8, 2, 8, 1, 8, 2, 8};
  EXPECT_DOUBLE_EQ(PearsonCorrelation(ties, more_ties).value(), 0.12819684197984457);
  EXPECT_DOUBLE_EQ(SpearmanCorrelation(ties, more_ties).value(), 0.16308001724472523);
}

// The formulas of the header, calculated in NumPy.
TEST(Statistics, JudgeControls) {
  const ControlSample low = SampleOf(std::vector{0.044, 0.041, 0.05, 0.038});
  const ControlSample high = SampleOf(std::vector{0.71, 0.753, 0.694, 0.72, 0.66});
  EXPECT_DOUBLE_EQ(ZPrime(low, high).value(), 0.8224953811173625);
  EXPECT_DOUBLE_EQ(SignalWindow(low, high).value(), 15.9851019066313);
  // A signal that falls is as good.
  EXPECT_THAT(ZPrime(high, low), Optional(ZPrime(low, high).value()));
}

TEST(Statistics, HaveNoValueWhereThereIsNone) {
  const std::vector<double> none;
  const std::vector<double> one = {7};
  const std::vector<double> equal = {0.1, 0.1, 0.1};  // whose mean is not exactly 0.1
  const std::vector<double> rising = {1, 2, 3};
  const std::vector<double> huge = {1e308, -1.7e308, 1.7e308};
  EXPECT_EQ(Mean(none), std::nullopt);
  EXPECT_EQ(SampleDeviation(one), std::nullopt);
  EXPECT_EQ(SampleDeviation(huge), std::nullopt);
  EXPECT_EQ(CoefficientOfVariation(std::vector{-1.0, 1.0}), std::nullopt);
  EXPECT_EQ(PearsonCorrelation(one, one), std::nullopt);
  EXPECT_EQ(PearsonCorrelation(equal, rising), std::nullopt);
  EXPECT_EQ(SpearmanCorrelation(rising, equal), std::nullopt);
  EXPECT_EQ(ZPrime(SampleOf(one), SampleOf(rising)), std::nullopt);
  EXPECT_EQ(ZPrime(SampleOf(rising), SampleOf(rising)), std::nullopt);
  EXPECT_EQ(SignalWindow(SampleOf(rising), SampleOf(equal)), std::nullopt);
}

}  // namespace
}  // namespace korvex
