// Values that formats made of XML write as text.
#pragma once

#include <optional>
#include <string_view>

namespace korvex {

// "0.25", "1E-07". What is too large becomes infinite.
std::optional<double> ReadNumber(std::string_view text);

// "#DIV/0!" and the like.
int ErrorCode(std::string_view name);

// ISO 8601 as days since 1899-12-30: "2002-12-03", "2002-12-03T10:15:00.5", "10:15:00" (the part of
// a day). A zone behind it does not count: cells hold local time.
std::optional<double> ReadIsoDate(std::string_view text);

// ISO 8601 durations of days and smaller units as days: "PT06H30M00.5S".
std::optional<double> ReadIsoDuration(std::string_view text);

}  // namespace korvex
