// How well the replications of a key agree: each pair of replications against each other, and how
// much the values of each key vary.
#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "report/html_sections.h"
#include "report/html_text.h"
#include "report/statistics.h"
#include "report/svg_chart.h"
#include "text/text.h"

namespace korvex {
namespace {

// The pairs of so many replications are shown, 15 at most.
constexpr std::size_t kMostReplications = 6;
constexpr std::size_t kVariationClasses = 41;  // the last one for the rest

struct KeyValue {
  std::uint32_t key;
  std::int16_t replication;
  double value;
};

// The numbers of each key by replication: the first where there are several.
std::vector<KeyValue> KeyValues(const ReportedReadings& reported) {
  std::vector<KeyValue> values;
  for (const Reading& reading : reported.readings.readings) {
    if (reading.text != Reading::kNumber) continue;
    values.push_back({reading.key, reported.ReplicationOf(reading), reading.number});
  }
  // Stable, so that of several numbers at one place the one that was read first stays in front.
  const auto place_of = [](const KeyValue& value) {
    return std::pair(value.key, value.replication);
  };
  std::ranges::stable_sort(values, {}, place_of);
  const auto rest =
      std::unique(values.begin(), values.end(),
                  [&](const KeyValue& a, const KeyValue& b) { return place_of(a) == place_of(b); });
  values.erase(rest, values.end());
  return values;
}

std::vector<std::int16_t> ReplicationsOf(const std::vector<KeyValue>& values) {
  std::vector<std::int16_t> replications;
  for (const KeyValue& value : values) {
    const auto at = std::ranges::lower_bound(replications, value.replication);
    if (at == replications.end() || *at != value.replication) {
      replications.insert(at, value.replication);
    }
  }
  return replications;
}

// Calls `use` with the values of each key, by replication.
template <class Use>
void ForEachKey(const std::vector<KeyValue>& values, Use&& use) {
  for (auto begin = values.begin(); begin != values.end();) {
    const auto end = std::find_if(begin, values.end(),
                                  [&](const KeyValue& value) { return value.key != begin->key; });
    use(std::span(begin, end));
    begin = end;
  }
}

struct Pair {
  std::int16_t first;
  std::int16_t second;
  std::vector<double> x;
  std::vector<double> y;
};

Pair PairOf(const std::vector<KeyValue>& values, std::int16_t first, std::int16_t second) {
  Pair pair{first, second, {}, {}};
  ForEachKey(values, [&](std::span<const KeyValue> of_key) {
    // A key that lacks one of the two replications is no point, rather than one at 0.
    const auto x = std::ranges::find(of_key, first, &KeyValue::replication);
    const auto y = std::ranges::find(of_key, second, &KeyValue::replication);
    if (x == of_key.end() || y == of_key.end()) return;
    pair.x.push_back(x->value);
    pair.y.push_back(y->value);
  });
  return pair;
}

void AppendPair(const Pair& pair, const Axis& axis, std::string& page) {
  std::vector<std::pair<double, double>> points;
  for (std::size_t i = 0; i < pair.x.size(); ++i) points.emplace_back(pair.x[i], pair.y[i]);
  Add(page, "<figure>");
  AppendScatter(points, axis, "replication " + std::to_string(pair.first),
                "replication " + std::to_string(pair.second), page);
  Add(page, "<figcaption>", Counted(points.size(), "key"), "<br>Pearson ",
      ShownFigure(PearsonCorrelation(pair.x, pair.y)), "<br>Spearman ",
      ShownFigure(SpearmanCorrelation(pair.x, pair.y)), "</figcaption></figure>\n");
}

void AppendPairs(const std::vector<KeyValue>& values, const std::vector<std::int16_t>& replications,
                 std::string& page) {
  // One axis for all pairs, so that a pair that agrees badly looks so beside the others.
  std::vector<double> numbers;
  for (const KeyValue& value : values) numbers.push_back(value.value);
  const Axis axis(numbers);
  const std::size_t shown = std::min(replications.size(), kMostReplications);
  std::string unpaired;
  Add(page, "<h3>Pairs of replications</h3>\n<div class=\"pairs\">\n");
  for (std::size_t i = 0; i < shown; ++i) {
    for (std::size_t j = i + 1; j < shown; ++j) {
      const Pair pair = PairOf(values, replications[i], replications[j]);
      if (pair.x.empty()) {
        Add(unpaired, unpaired.empty() ? "" : ", ", std::to_string(pair.first), " and ",
            std::to_string(pair.second));
      } else {
        AppendPair(pair, axis, page);
      }
    }
  }
  Add(page,
      "</div>\n<p class=\"caption\">A point is a key with a number in both replications; on the "
      "line both are equal. All points are drawn; where several fall on one spot they are one "
      "point, bolder from 3 and again from 10 on.");
  if (!unpaired.empty()) {
    Add(page, " No key has numbers in both of these replications: ", unpaired, ".");
  }
  if (shown < replications.size()) {
    Add(page, " There are ", std::to_string(replications.size()),
        " replications; the pairs of the first ", std::to_string(shown), " are shown.");
  }
  Add(page, "</p>\n");
}

// A round number at or above, for the end of an axis.
double RoundUp(double value) {
  const double power = std::pow(10, std::floor(std::log10(value)));
  // Finer steps at the lower end, where the next round number would leave half the axis empty.
  for (const double step : {1.0, 1.5, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0}) {
    if (value <= step * power) return step * power;
  }
  return 10 * power;
}

void AppendVariation(const std::vector<KeyValue>& values, std::string& page) {
  std::vector<double> variations;
  std::size_t single = 0;
  std::size_t undefined = 0;
  std::vector<double> numbers;
  ForEachKey(values, [&](std::span<const KeyValue> of_key) {
    numbers.clear();
    for (const KeyValue& value : of_key) numbers.push_back(value.value);
    if (numbers.size() < 2) {
      ++single;
    } else if (const auto variation = CoefficientOfVariation(numbers);
               variation && std::isfinite(*variation * 100)) {
      variations.push_back(*variation * 100);
    } else {
      ++undefined;
    }
  });
  Add(page, "<h3>Variation of each key</h3>\n");
  if (variations.empty()) {
    Add(page, "<p>No key has a coefficient of variation.</p>\n");
    return;
  }
  std::ranges::sort(variations);
  // A key with a mean near 0 varies by thousands of percent: the axis ends at the 99th percentile,
  // so that one such key does not squeeze all others into the first bar.
  const double highest = Percentile(variations, 0.99);
  // At least 0.01 %: below it, differences are roundings. Where no key varies, any end will do.
  const double end = highest > 0 ? RoundUp(std::max(highest, 0.01)) : 1;
  std::vector<std::size_t> counts(kVariationClasses);
  for (const double variation : variations) {
    // The last class holds all that lies beyond the end, however far.
    const double place = variation / end * static_cast<double>(kVariationClasses - 1);
    ++counts[static_cast<std::size_t>(std::min(place, static_cast<double>(kVariationClasses - 1)))];
  }
  Add(page, "<figure>");
  AppendHistogram(counts, end, "coefficient of variation in %", page);
  Add(page, "<figcaption>", Counted(variations.size(), "key"), ": median ",
      ShownPercent(Percentile(variations, 0.5) / 100), ", 90th percentile ",
      ShownPercent(Percentile(variations, 0.9) / 100), ", largest ",
      ShownPercent(variations.back() / 100), ".");
  if (single > 0) Add(page, " ", Counted(single, "key"), " with one number alone left out.");
  if (undefined > 0) Add(page, " ", Counted(undefined, "key"), " with a mean of 0 left out.");
  Add(page, "</figcaption></figure>\n");
}

}  // namespace

void AppendAgreement(const ReportedReadings& reported, std::string& page) {
  const std::vector<KeyValue> values = KeyValues(reported);
  const std::vector<std::int16_t> replications = ReplicationsOf(values);
  Add(page, "<section id=\"agreement\"><h2>Agreement of replications</h2>\n");
  if (values.empty()) {
    Add(page, "<p>No measured value is a number.</p>\n");
  } else if (replications.size() < 2) {
    Add(page, "<p>There is one replication, so that nothing can be compared.</p>\n");
  } else {
    AppendPairs(values, replications, page);
    AppendVariation(values, page);
  }
  Add(page, "</section>\n");
}

}  // namespace korvex
