#include "text/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace korvex {
namespace {

constexpr int kDecimals = 9;
constexpr std::uint64_t kUnit = 1'000'000'000;  // as many zeros

// Up to 15 digits, as many as a double keeps apart: if such a decimal number reads as a double,
// then it is the shortest that does, but for zeros at its end. Numbers outside of these bounds may
// have an exponent.
constexpr double kSmallest = 0.001;
constexpr double kEnd = 100'000;

}  // namespace

char* WriteNumber(double number, char* out) {
  const double magnitude = std::abs(number);
  const bool is_usual = magnitude >= kSmallest && magnitude < kEnd;
  const auto units = is_usual ? static_cast<std::uint64_t>(magnitude * kUnit + 0.5) : 0;
  if (!is_usual || static_cast<double>(units) / kUnit != magnitude) {
    return std::to_chars(out, out + kLongestNumberText, number).ptr;
  }
  if (number < 0) *out++ = '-';
  out = std::to_chars(out, out + kLongestNumberText, units / kUnit).ptr;
  std::uint64_t fraction = units % kUnit;
  if (fraction == 0) return out;
  int decimals = kDecimals;
  for (; fraction % 1000 == 0; decimals -= 3) fraction /= 1000;
  for (; fraction % 10 == 0; --decimals) fraction /= 10;
  *out = '.';
  for (int i = decimals; i > 0; --i) {
    out[i] = static_cast<char>('0' + fraction % 10);
    fraction /= 10;
  }
  return out + decimals + 1;
}

}  // namespace korvex
