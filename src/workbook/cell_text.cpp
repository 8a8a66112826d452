#include "workbook/cell_text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <system_error>

#include "platform/error.h"
#include "text/number_text.h"
#include "text/text.h"
#include "workbook/cell_error.h"

namespace korvex {
namespace {

constexpr int kSignificantDigits = 15;
constexpr double kFirstScientific = 1e15;  // smallest whole number in scientific notation

constexpr long kSecondsPerDay = 86400;
constexpr long kMillisecondsPerSecond = 1000;
constexpr long kMillisecondsPerDay = kSecondsPerDay * kMillisecondsPerSecond;
// The calendar goes from year 100 to the end of year 9999; a serial outside of it is a plain
// number.
constexpr double kFirstDay = -657434;
constexpr double kEndOfCalendar = 2958466 - 0.5 / kSecondsPerDay;

using Buffer = std::array<char, 40>;  // more than the longest number or date

void AppendInteger(std::int64_t value, std::string& out) {
  Buffer buffer;
  const char* end = std::to_chars(buffer.begin(), buffer.end(), value).ptr;
  out.append(std::string_view(buffer.data(), end));
}

// The digits of a number without sign, point and trailing zeros; its value is
// 0.d1d2d3... * 10^point.
struct Decimal {
  Buffer digits;
  int count = 0;
  int point = 0;
};

// Takes "d.ddde+XX" apart.
Decimal DecimalFrom(const char* text, const char* end) {
  Decimal decimal;
  for (; text != end && *text != 'e'; ++text)
    if (*text != '.') decimal.digits[static_cast<std::size_t>(decimal.count++)] = *text;
  ++text;
  if (*text == '+') ++text;
  std::from_chars(text, end, decimal.point);
  ++decimal.point;
  while (decimal.count > 1 && decimal.digits[static_cast<std::size_t>(decimal.count) - 1] == '0')
    --decimal.count;
  return decimal;
}

// The shortest digits that tell the number from its neighbours are quick to find and, as long as
// there are no more than 15, the same as the number rounded to 15. Denormal numbers break that
// rule.
Decimal RoundedDecimal(double magnitude) {
  constexpr auto kScientific = std::chars_format::scientific;
  Buffer buffer;
  if (std::isnormal(magnitude)) {
    const char* end = std::to_chars(buffer.begin(), buffer.end(), magnitude, kScientific).ptr;
    const Decimal shortest = DecimalFrom(buffer.data(), end);
    if (shortest.count <= kSignificantDigits) return shortest;
  }
  const char* end =
      std::to_chars(buffer.begin(), buffer.end(), magnitude, kScientific, kSignificantDigits - 1)
          .ptr;
  return DecimalFrom(buffer.data(), end);
}

void AppendScientific(const Decimal& decimal, std::string& out) {
  out.push_back(decimal.digits[0]);
  if (decimal.count > 1) {
    out.push_back('.');
    out.append(decimal.digits.data() + 1, static_cast<std::size_t>(decimal.count) - 1);
  }
  const int exponent = decimal.point - 1;
  out.append(exponent < 0 ? "E-" : "E+");
  if (std::abs(exponent) < 10) out.push_back('0');
  AppendInteger(std::abs(exponent), out);
}

void AppendFixed(const Decimal& decimal, std::string& out) {
  const auto digits = [&decimal](int from, int to) {
    return std::string_view(decimal.digits.data() + from, static_cast<std::size_t>(to - from));
  };
  if (decimal.point <= 0) {
    out.append("0.");
    out.append(static_cast<std::size_t>(-decimal.point), '0');
    out.append(digits(0, decimal.count));
  } else if (decimal.point >= decimal.count) {
    out.append(digits(0, decimal.count));
    out.append(static_cast<std::size_t>(decimal.point - decimal.count), '0');
  } else {
    out.append(digits(0, decimal.point));
    out.push_back('.');
    out.append(digits(decimal.point, decimal.count));
  }
}

// A number is written out while 15 places on either side of the point are enough, and with an
// exponent beyond that. Whole numbers, most of all data, take a shorter way.
void AppendNumber(double number, std::string& out) {
  if (std::abs(number) < kFirstScientific && number == std::trunc(number)) {
    AppendInteger(static_cast<std::int64_t>(number), out);
    return;
  }
  if (!std::isfinite(number)) {
    out.append(std::isnan(number) ? "NaN" : number < 0 ? "-Infinity" : "Infinity");
    return;
  }
  if (number < 0) out.push_back('-');
  const Decimal decimal = RoundedDecimal(std::abs(number));
  const int decimals = decimal.count - decimal.point;
  if (decimal.point > kSignificantDigits || decimals > kSignificantDigits) {
    AppendScientific(decimal, out);
  } else {
    AppendFixed(decimal, out);
  }
}

// A serial number as day 0 = 1899-12-30 and the time of that day, in seconds or parts of them.
// Below zero the whole days count backwards, but the time of day forwards. None outside the
// calendar.
struct Moment {
  int day = 0;
  long time = 0;
};

std::optional<Moment> MomentOf(double serial, long parts_of_day) {
  if (!(serial >= kFirstDay && serial < kEndOfCalendar)) return std::nullopt;
  // Rounding the day as a whole, not its parts, lets a full minute carry into the hour and a full
  // day into the date.
  const int day = static_cast<int>(serial);
  const long time = std::lround(std::abs(serial - day) * static_cast<double>(parts_of_day));
  if (time == parts_of_day) return Moment{day + 1, 0};
  return Moment{day, time};
}

std::chrono::year_month_day CalendarDay(int day) {
  constexpr auto kDayZero = std::chrono::sys_days{std::chrono::year{1899} / 12 / 30};
  return kDayZero + std::chrono::days{day};
}

void AppendTwoDigits(long value, std::string& out) {
  out.push_back(static_cast<char>('0' + value / 10));
  out.push_back(static_cast<char>('0' + value % 10));
}

void AppendDay(int day, std::string& out) {
  const std::chrono::year_month_day date = CalendarDay(day);
  AppendInteger(static_cast<unsigned>(date.month()), out);
  out.push_back('/');
  AppendInteger(static_cast<unsigned>(date.day()), out);
  out.push_back('/');
  AppendInteger(static_cast<int>(date.year()), out);
}

void AppendMinuteAndSecond(long seconds, std::string& out) {
  out.push_back(':');
  AppendTwoDigits(seconds / 60 % 60, out);
  out.push_back(':');
  AppendTwoDigits(seconds % 60, out);
}

void AppendTime(long seconds, std::string& out) {
  const long hour = seconds / 3600;
  AppendInteger(hour % 12 == 0 ? 12 : hour % 12, out);
  AppendMinuteAndSecond(seconds, out);
  out.append(hour < 12 ? " AM" : " PM");
}

void AppendIsoDay(int day, std::string& out) {
  const std::chrono::year_month_day date = CalendarDay(day);
  const int year = static_cast<int>(date.year());
  AppendTwoDigits(year / 100, out);
  AppendTwoDigits(year % 100, out);
  out.push_back('-');
  AppendTwoDigits(static_cast<unsigned>(date.month()), out);
  out.push_back('-');
  AppendTwoDigits(static_cast<unsigned>(date.day()), out);
}

void AppendIsoTime(long milliseconds, std::string& out) {
  const long seconds = milliseconds / kMillisecondsPerSecond;
  const long fraction = milliseconds % kMillisecondsPerSecond;
  AppendTwoDigits(seconds / 3600, out);
  AppendMinuteAndSecond(seconds, out);
  if (fraction == 0) return;
  out.push_back('.');
  out.push_back(static_cast<char>('0' + fraction / 100));
  AppendTwoDigits(fraction % 100, out);
}

// The date alone at midnight, the time alone on day 0.
template <class DayForm, class TimeForm>
void AppendMoment(Moment moment, std::string& out, DayForm append_day, TimeForm append_time) {
  const bool has_day = moment.day != 0;
  const bool has_time = moment.time != 0 || !has_day;
  if (has_day) append_day(moment.day, out);
  if (has_day && has_time) out.push_back(' ');
  if (has_time) append_time(moment.time, out);
}

void AppendDate(double serial, std::string& out) {
  if (const auto moment = MomentOf(serial, kSecondsPerDay)) {
    AppendMoment(*moment, out, AppendDay, AppendTime);
  } else {
    AppendNumber(serial, out);
  }
}

void AppendExactNumber(double number, std::string& out) {
  if (std::abs(number) < kFirstScientific && number == std::trunc(number)) {
    AppendInteger(static_cast<std::int64_t>(number), out);
    return;
  }
  char text[kLongestNumberText];
  out.append(text, WriteNumber(number, text));
}

void DropBlanks(std::string_view& text) {
  text = TrimBlanks(text, " \t\n\v\f\r");
}

// "10" of "&H10"; up to four digits are a 16-bit number in two's complement, up to eight a 32-bit
// one.
std::optional<double> ParseHex(std::string_view digits) {
  std::uint32_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value, 16);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  if (digits.size() <= 4) return static_cast<std::int16_t>(value);
  return static_cast<std::int32_t>(value);
}

// Digits with at most one point and an exponent; the caller has made sure of the first character.
std::optional<double> ParsePlain(std::string_view text) {
  double value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ptr != end) return std::nullopt;
  if (result.ec == std::errc()) return value;
  if (result.ec != std::errc::result_out_of_range) return std::nullopt;
  // Too small for a double counts as 0, too large is no number.
  const bool vanishes = text.find("e-") != text.npos || text.find("E-") != text.npos;
  return vanishes ? std::optional<double>(0.0) : std::nullopt;
}

// Commas group digits, each behind a digit of the whole part.
std::optional<double> ParseGrouped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != ',') {
      plain.push_back(text[i]);
    } else if (i == 0 || !IsAsciiDigit(text[i - 1]) ||
               plain.find_first_not_of("0123456789") != plain.npos) {
      return std::nullopt;
    }
  }
  return ParsePlain(plain);
}

}  // namespace

std::string CellText(const CellValue& value) {
  std::string text;
  AppendCellText(value, text);
  return text;
}

void AppendCellText(const CellValue& value, std::string& out) {
  constexpr int kFirstErrorNumber = 2000;
  switch (value.kind) {
    case CellKind::kEmpty:
      break;
    case CellKind::kNumber:
      AppendNumber(value.number, out);
      break;
    case CellKind::kDate:
    case CellKind::kElapsed:
      AppendDate(value.number, out);
      break;
    case CellKind::kBoolean:
      out.append(value.number != 0 ? "True" : "False");
      break;
    case CellKind::kError:
      out.append("Error ");
      AppendInteger(kFirstErrorNumber + static_cast<int>(value.number), out);
      break;
    case CellKind::kText:
      out.append(value.text);
      break;
  }
}

void AppendDataText(const CellValue& value, std::string& out) {
  switch (value.kind) {
    case CellKind::kEmpty:
      break;
    case CellKind::kNumber:
    case CellKind::kElapsed:
      AppendExactNumber(value.number, out);
      break;
    case CellKind::kDate:
      if (const auto moment = MomentOf(value.number, kMillisecondsPerDay)) {
        AppendMoment(*moment, out, AppendIsoDay, AppendIsoTime);
      } else {
        AppendExactNumber(value.number, out);
      }
      break;
    case CellKind::kBoolean:
      out.append(value.number != 0 ? "TRUE" : "FALSE");
      break;
    case CellKind::kError:
      out.append(ErrorName(static_cast<int>(value.number)));
      break;
    case CellKind::kText:
      out.append(value.text);
      break;
  }
}

bool IsNumeric(const CellValue& value) {
  switch (value.kind) {
    case CellKind::kEmpty:
    case CellKind::kNumber:
    case CellKind::kBoolean:
      return true;
    case CellKind::kText:
      return ParseNumber(value.text).has_value();
    case CellKind::kDate:
    case CellKind::kElapsed:
    case CellKind::kError:
      break;
  }
  return false;
}

std::optional<double> ParseNumber(std::string_view text) {
  DropBlanks(text);
  if (text.starts_with("&H") || text.starts_with("&h")) return ParseHex(text.substr(2));

  // One sign, in front, behind, or as parentheses; one currency sign in front.
  bool has_sign = false;
  bool negative = false;
  if (text.size() > 2 && text.front() == '(' && text.back() == ')') {
    has_sign = negative = true;
    text = text.substr(1, text.size() - 2);
    DropBlanks(text);
  }
  bool has_currency = false;
  while (!text.empty() && !IsAsciiDigit(text.front()) && text.front() != '.') {
    const char c = text.front();
    const bool is_sign = c == '-' || c == '+';
    if (is_sign ? has_sign : c != '$' || has_currency) return std::nullopt;
    (is_sign ? has_sign : has_currency) = true;
    negative = negative || c == '-';
    text.remove_prefix(1);
    DropBlanks(text);
  }
  if (!has_sign && !text.empty() && (text.back() == '-' || text.back() == '+')) {
    negative = text.back() == '-';
    text.remove_suffix(1);
    DropBlanks(text);
  }
  if (text.empty()) return std::nullopt;

  const bool grouped = text.find(',') != text.npos;
  const std::optional<double> magnitude = grouped ? ParseGrouped(text) : ParsePlain(text);
  if (!magnitude) return std::nullopt;
  return negative ? -*magnitude : *magnitude;
}

std::int16_t ToInt16(std::string_view text) {
  const std::optional<double> number = ParseNumber(text);
  if (!number) {
    throw Error(error_number::kTypeMismatch,
                "Type mismatch: \"" + std::string(text) + "\" is not a number.");
  }
  const double rounded = std::nearbyint(*number);  // halves to even
  if (rounded < INT16_MIN || rounded > INT16_MAX) {
    throw Error(error_number::kOverflow,
                "Overflow: \"" + std::string(text) + "\" lies outside -32768 to 32767.");
  }
  return static_cast<std::int16_t>(rounded);
}

CellValue CellFromText(std::string_view text) {
  if (text.empty() || !(IsAsciiDigit(text.front()) || text.front() == '-'))
    return CellValue::Text(text);
  // The longest plain form: sign, "0.", and 15 digits.
  if (text.size() > kSignificantDigits + 3 || text.find_first_not_of("-.0123456789") != text.npos)
    return CellValue::Text(text);
  double number = 0;
  const char* end = text.data() + text.size();
  if (std::from_chars(text.data(), end, number).ptr != end) return CellValue::Text(text);
  // Only a text that reads back the same becomes a number: "0017" is a name, and stays one.
  std::string plain;
  AppendNumber(number, plain);
  return plain == text ? CellValue::Number(number) : CellValue::Text(text);
}

}  // namespace korvex
