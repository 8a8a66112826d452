#include "ui/twips.h"

#include <algorithm>
#include <cmath>

namespace korvex {
namespace {

constexpr double kTwipsPerInch = 1440;
// Of an ordinary desktop font: the height of a line at 96 pixels to the inch.
constexpr double kUsualLineInches = 17.0 / 96.0;

}  // namespace

Twips::Twips(const wxWindow& window) {
  const double pixels_per_inch = window.GetDPI().GetHeight() / window.GetContentScaleFactor();
  const double letters = window.GetCharHeight() / (kUsualLineInches * pixels_per_inch);
  per_pixel_ = kTwipsPerInch / (pixels_per_inch * std::max(1.0, letters));
}

int Twips::ToPixels(int twips) const {
  return static_cast<int>(std::lround(twips / per_pixel_));
}

int Twips::FromPixels(int pixels) const {
  return static_cast<int>(std::lround(pixels * per_pixel_));
}

}  // namespace korvex
