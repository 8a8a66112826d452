#include "spreadsheet/cells/typed_number.h"

#include <cstddef>

namespace korvex {
namespace {

bool IsOneOf(char letter, std::string_view letters) {
  return letters.find(letter) != std::string_view::npos;
}

// Whether the text between two brackets is an elapsed time: "h", "mm", "s".
bool IsElapsedTime(std::string_view inside) {
  if (inside.empty() || !IsOneOf(inside[0], "hHmMsS")) return false;
  for (const char letter : inside) {
    if ((letter | 0x20) != (inside[0] | 0x20)) return false;
  }
  return true;
}

}  // namespace

// 14 to 22 and 45 to 47 everywhere; the others in Asian versions.
DateForm BuiltInDateForm(int id) {
  if (id == 46) return DateForm::kElapsed;
  const bool is_date = (id >= 14 && id <= 22) || (id >= 27 && id <= 36) || (id >= 45 && id <= 47) ||
                       (id >= 50 && id <= 58) || (id >= 71 && id <= 81);
  return is_date ? DateForm::kMoment : DateForm::kNone;
}

DateForm DateFormOf(std::string_view format) {
  for (std::size_t i = 0; i < format.size(); ++i) {
    const char letter = format[i];
    if (letter == '"') {
      i = format.find('"', i + 1);
    } else if (letter == '[') {
      const std::size_t close = format.find(']', i + 1);
      if (close == std::string_view::npos) return DateForm::kNone;
      if (IsElapsedTime(format.substr(i + 1, close - i - 1))) {
        return DateForm::kElapsed;
      }
      i = close;
    } else if (IsOneOf(letter, "\\_*")) {
      // The next character is shown as it is, as a blank of its width, or repeated.
      ++i;
    } else if (IsOneOf(letter, "dDmMyYhHsS")) {
      return DateForm::kMoment;
    }
    if (i == std::string_view::npos) return DateForm::kNone;
  }
  return DateForm::kNone;
}

}  // namespace korvex
