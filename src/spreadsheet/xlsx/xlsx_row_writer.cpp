#include "spreadsheet/xlsx/xlsx_row_writer.h"

#include <bit>
#include <cmath>
#include <utility>

#include "text/utf8.h"
#include "workbook/cell_error.h"
#include "workbook/cell_text.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr std::size_t kBlock = 64 * 1024;

// "_x0001_": four digits, as readers look for exactly so many.
void AppendEscape(unsigned unit, std::string& out) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  out += "_x";
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kDigits[unit >> shift & 0xF]);
  out.push_back('_');
}

// Whether a text begins like an escape, so that readers would take it for one: its "_" is escaped.
bool IsEscape(std::string_view text) {
  return text.size() >= 7 && text[1] == 'x' && text[6] == '_' &&
         text.substr(2, 4).find_first_not_of("0123456789ABCDEFabcdef") == std::string_view::npos;
}

bool IsPlain(char c) {
  return c >= 0x20 && c != '&' && c != '<' && c != '>' && c != '_';
}

// Appends the first character of a text, one that is not plain, and returns its length in bytes.
std::size_t AppendSpecial(std::string_view text, std::string& out) {
  switch (const char c = text.front()) {
    case '&':
      out += "&amp;";
      return 1;
    case '<':
      out += "&lt;";
      return 1;
    case '>':
      out += "&gt;";
      return 1;
    case '_':
      if (IsEscape(text)) {
        AppendEscape('_', out);
      } else {
        out.push_back('_');
      }
      return 1;
    case '\r':
      out += "&#13;";  // bare, it would be read as a line feed
      return 1;
    case '\t':
    case '\n':
      out.push_back(c);
      return 1;
    default:
      break;
  }
  const Utf8Character first = FirstUtf8(text);
  if (first.code == kInvalidByte) {
    AppendUtf8(kReplacementCharacter, out);
  } else if (first.code < 0x20 || first.code == 0xFFFE || first.code == 0xFFFF) {
    AppendEscape(static_cast<unsigned>(first.code), out);
  } else {
    out.append(text.substr(0, first.length));
  }
  return first.length;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n';
}

// Appends a text in the form that it has between tags.
void AppendEscaped(std::string_view text, std::string& out) {
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain < text.size() && IsPlain(text[plain])) ++plain;
    out.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (!text.empty()) text.remove_prefix(AppendSpecial(text, out));
  }
}

// Dates are shown with what they have: serials below 1 are times of day, whole ones dates alone.
XlsxFormat FormatOf(CellKind kind, double number) {
  if (!IsDateKind(kind)) return XlsxFormat::kGeneral;
  if (number >= 0 && number < 1) return XlsxFormat::kTime;
  return std::trunc(number) == number ? XlsxFormat::kDate : XlsxFormat::kDateTime;
}

}  // namespace

XlsxRowWriter::XlsxRowWriter(const CellStore& cells, const TextPool& texts, Sink take)
    : cells_(cells), texts_(texts), take_(std::move(take)) {
  for (int column = 1; column <= cells.ColumnCount(); ++column) {
    letters_.push_back(ColumnLetters(column));
  }
}

// Cells are stored by column and written by row: for each 512 rows the blocks that hold anything
// are looked up once.
void XlsxRowWriter::Write() {
  for (int block = 0; block < cells_.BlockCount(); ++block) {
    parts_.clear();
    for (std::size_t column = 0; column < letters_.size(); ++column) {
      const CellBlock* const part = cells_.Block(block, static_cast<int>(column));
      if (part != nullptr) parts_.push_back({column, part});
    }
    for (int row = 0; row < CellBlock::kRows; ++row) {
      AppendRow(block * CellBlock::kRows + row + 1, static_cast<std::size_t>(row));
    }
  }
  if (!text_.empty()) take_(text_);
}

void XlsxRowWriter::AppendRow(int row, std::size_t row_in_block) {
  bool is_empty = true;
  for (const auto& [column, block] : parts_) {
    if (block->kinds[row_in_block] == CellKind::kEmpty) continue;
    if (is_empty) {
      row_number_ = std::to_string(row);
      text_.append("<row r=\"").append(row_number_).append("\">");
      is_empty = false;
    }
    AppendCell(column, block->kinds[row_in_block], block->bits[row_in_block]);
    // Within a row, too: one row of 16,384 long texts takes half a gigabyte.
    if (text_.size() >= kBlock) take_(text_);
  }
  if (!is_empty) text_.append("</row>");
}

// A number is written with as many digits as it takes to read the same one, which is what data
// texts have; the text that a cell shows has 15.
void XlsxRowWriter::AppendCell(std::size_t column, CellKind kind, std::uint64_t bits) {
  text_.append("<c r=\"").append(letters_[column]).append(row_number_).push_back('"');
  if (kind == CellKind::kText) {
    AppendText(texts_.Text(static_cast<std::uint32_t>(bits)));
    return;
  }
  const double number = std::bit_cast<double>(bits);
  if (kind == CellKind::kBoolean) {
    text_.append(number != 0 ? " t=\"b\"><v>1" : " t=\"b\"><v>0");
  } else if (kind == CellKind::kError) {
    text_.append(" t=\"e\"><v>").append(ErrorName(static_cast<int>(number)));
  } else {
    if (const XlsxFormat format = FormatOf(kind, number); format != XlsxFormat::kGeneral) {
      text_.append(" s=\"").append(std::to_string(static_cast<int>(format))).push_back('"');
    }
    text_.append("><v>");
    AppendDataText(CellValue::Number(number), text_);
  }
  text_.append("</v></c>");
}

void XlsxRowWriter::AppendText(std::string_view text) {
  // Readers may drop blanks at the ends of a text that does not ask to keep them.
  const bool keeps_blanks = IsBlank(text.front()) || IsBlank(text.back());
  text_.append(keeps_blanks ? " t=\"inlineStr\"><is><t xml:space=\"preserve\">"
                            : " t=\"inlineStr\"><is><t>");
  AppendEscaped(text, text_);
  text_.append("</t></is></c>");
}

}  // namespace korvex
