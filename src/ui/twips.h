// Twips, the unit in which forms are designed: 1440 to an inch of the screen.
#pragma once

#include <wx/window.h>

namespace korvex {

// Converts between twips and the pixels of one window's screen. A user who has asked for larger
// letters gets larger forms, too: what was designed around a line of text keeps fitting it.
class Twips {
 public:
  explicit Twips(const wxWindow& window);

  int ToPixels(int twips) const;
  int FromPixels(int pixels) const;

 private:
  double per_pixel_;
};

}  // namespace korvex
