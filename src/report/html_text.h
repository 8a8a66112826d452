// Texts and numbers as the page of a report shows them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace korvex {

// Appends markup, piece by piece.
template <class... Pieces>
void Add(std::string& page, const Pieces&... pieces) {
  (page.append(pieces), ...);
}

// A text of a workbook or a file name, for elements and quoted attributes. What HTML does not allow
// (bytes that are no UTF-8, control characters) becomes U+FFFD.
std::string Escaped(std::string_view text);

// A measured number, at most six significant digits: "0.0415", "123457", "1.5e-07".
std::string ShownNumber(double number);
// A computed figure, at most four significant digits; a dash for none.
std::string ShownFigure(std::optional<double> figure);
// Of a fraction, with three significant digits: "4.52 %"; six from 1,000 % on.
std::string ShownPercent(double fraction);

// The last name of a path; empty for a root.
std::string LastName(std::string_view path);

}  // namespace korvex
