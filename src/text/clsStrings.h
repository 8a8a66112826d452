// Trims texts.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

class clsStrings {
 public:
  // Takes everything outside printable ASCII, blanks and accented letters included, off both ends.
  std::string TrimJunk(std::string_view string) const;
};

}  // namespace korvex
