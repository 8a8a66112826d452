#include "spreadsheet/cells/typed_value.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <limits>

#include "spreadsheet/bytes/xml_names.h"
#include "text/text.h"

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

constexpr double kSecondsPerDay = 86400;

// Programs with more errors than there are codes number theirs; this one has a code.
constexpr std::string_view kNumberErrorNumbered = "Err:503";

// Removes a number of exactly `digits` digits from the front and returns it; -1 when there is none.
int TakeDigits(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) return -1;
  int number = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    if (!IsAsciiDigit(text[i])) return -1;
    number = 10 * number + (text[i] - '0');
  }
  text.remove_prefix(digits);
  return number;
}

bool Take(std::string_view& text, char letter) {
  if (text.empty() || text[0] != letter) return false;
  text.remove_prefix(1);
  return true;
}

// Seconds of "10:15", "10:15:00", "10:15:00.5". Elapsed times can have more than 24 hours:
// "30:15:00".
std::optional<double> TakeTime(std::string_view& text) {
  constexpr std::size_t kMostDigits = 8;
  const int hours = TakeDigits(text, std::clamp<std::size_t>(text.find(':'), 2, kMostDigits));
  if (hours < 0 || !Take(text, ':')) return {};
  const int minutes = TakeDigits(text, 2);
  if (minutes < 0 || minutes > 59) return {};
  double seconds = 0;
  if (Take(text, ':')) {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc() || !(seconds >= 0 && seconds < 61)) return {};
    text = {rest, end};
  }
  return hours * 3600.0 + minutes * 60 + seconds;
}

// Days since 1899-12-30 of "2002-12-03"; none for a day that the calendar does not have.
std::optional<int> TakeDay(std::string_view& text) {
  using std::chrono::sys_days;
  constexpr sys_days kFirst{std::chrono::year{1899} / 12 / 30};
  // Years after 9999 have five digits.
  const int year = TakeDigits(text, text.find('-') == 5 ? 5 : 4);
  if (year < 0 || year > static_cast<int>(std::chrono::year::max()) || !Take(text, '-')) return {};
  const int month = TakeDigits(text, 2);
  if (month < 0 || !Take(text, '-')) return {};
  const int day = TakeDigits(text, 2);
  if (day < 0) return {};
  const std::chrono::year_month_day date{std::chrono::year{year},
                                         std::chrono::month{static_cast<unsigned>(month)},
                                         std::chrono::day{static_cast<unsigned>(day)}};
  if (!date.ok()) return {};
  return static_cast<int>((sys_days{date} - kFirst).count());
}

// A number of few digits, without an exponent, as nearly all are. Both the digits and the power of
// ten are exact as doubles, and so their quotient is the double nearest to the number.
std::optional<double> ReadFewDigits(std::string_view text) {
  constexpr std::size_t kLongest = 19;
  constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;
  constexpr double kPowers[kLongest] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                        1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
  const bool is_negative = text.starts_with('-');
  if (is_negative) text.remove_prefix(1);
  if (text.empty() || text.size() > kLongest || !IsAsciiDigit(text.front())) return {};
  std::uint64_t digits = 0;
  std::size_t point = text.size() - 1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsAsciiDigit(text[i])) {
      digits = 10 * digits + static_cast<std::uint64_t>(text[i] - '0');
    } else if (text[i] == '.' && point == text.size() - 1) {
      point = i;
    } else {
      return {};
    }
  }
  if (digits > kLargestExact) return {};
  const double number = static_cast<double>(digits) / kPowers[text.size() - 1 - point];
  return is_negative ? -number : number;
}

bool IsZone(std::string_view text) {
  return text.empty() || text == "Z" || text[0] == '+' || text[0] == '-';
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

std::optional<double> ReadNumber(std::string_view text) {
  text = TrimXmlBlanks(text);
  if (const std::optional<double> plain = ReadFewDigits(text)) return plain;
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (rest != end || error == std::errc::invalid_argument) return {};
  // Too large or too small for a double; only the exponent's sign tells which.
  if (error == std::errc::result_out_of_range) {
    const bool is_small = text.find("e-") != text.npos || text.find("E-") != text.npos;
    return is_small ? 0 : std::numeric_limits<double>::infinity();
  }
  return number;
}

bool IsErrorName(std::string_view text) {
  return text.starts_with("Err:") ||
         std::any_of(std::begin(kCellErrors), std::end(kCellErrors),
                     [text](const CellError& error) { return error.name == text; });
}

int ErrorCode(std::string_view name) {
  if (name == kNumberErrorNumbered) return kNumberError;
  for (const CellError& error : kCellErrors) {
    if (error.name == name) return error.code;
  }
  return kNoValueError;
}

std::optional<DayAndTime> ReadIsoDate(std::string_view text) {
  text = TrimXmlBlanks(text);
  DayAndTime date{0, 0};
  // "10:15" is a time alone.
  if (text.size() < 3 || text[2] != ':') {
    const std::optional<int> day = TakeDay(text);
    if (!day) return {};
    date.day = *day;
    if (!Take(text, 'T') && !Take(text, ' '))
      return IsZone(text) ? std::optional(date) : std::nullopt;
  }
  const std::optional<double> seconds = TakeTime(text);
  if (!seconds || !IsZone(text)) return {};
  date.time = *seconds / kSecondsPerDay;
  return date;
}

TypedNumber TypeDate(DayAndTime date, bool uses_1904) {
  constexpr int kFirstOfMarch1900 = 61;  // from here on both counts agree
  if (!uses_1904 && date.day > 0 && date.day < kFirstOfMarch1900) --date.day;
  return TypeNumber(date.Serial(), DateForm::kMoment, false);
}

std::optional<double> ReadIsoDuration(std::string_view text) {
  text = TrimXmlBlanks(text);
  const bool is_negative = Take(text, '-');
  if (!Take(text, 'P')) return {};
  bool is_time = false;
  double seconds = 0;
  while (!text.empty()) {
    if (Take(text, 'T')) {
      is_time = true;
      continue;
    }
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (error != std::errc() || rest == end) return {};
    text = {rest, end};
    if (!is_time && Take(text, 'D')) {
      seconds += number * kSecondsPerDay;
    } else if (is_time && Take(text, 'H')) {
      seconds += number * 3600;
    } else if (is_time && Take(text, 'M')) {
      seconds += number * 60;
    } else if (is_time && Take(text, 'S')) {
      seconds += number;
    } else {
      return {};
    }
  }
  return (is_negative ? -seconds : seconds) / kSecondsPerDay;
}

}  // namespace korvex
