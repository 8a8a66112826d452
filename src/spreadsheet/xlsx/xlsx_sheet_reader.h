// Reads the cells of one worksheet of an .xlsx workbook.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/xml_parser.h"
#include "spreadsheet/cells/shared_strings.h"
#include "spreadsheet/cells/sheet_cells.h"
#include "spreadsheet/cells/typed_number.h"
#include "spreadsheet/xlsx/xlsx_globals.h"
#include "spreadsheet/xlsx/xlsx_text.h"

namespace korvex {

// The part of a worksheet, fed to the handler element by element:
//   <worksheet><sheetData><row r="7"><c r="B7" s="format" t="type"> <f/> <v/> <is/>
// Rows and cells without r follow the one before. Types: n number (or none), s index of a shared
// text, str text, inlineStr text in <is>, b Boolean, e error, d ISO date. A formula without a
// result was never calculated; neither were those of a sheet that are all zero or empty, when the
// workbook asks for calculation on load.
class XlsxSheetReader : public XmlHandler {
 public:
  // `shows_date` goes by format.
  XlsxSheetReader(const SharedStrings& strings, const std::vector<std::uint8_t>& shows_date,
                  const XlsxGlobals& globals, SheetCells& cells)
      : strings_(strings), shows_date_(shows_date), globals_(globals), cells_(cells) {}

  bool StartElement(const XmlElement& element) override;
  void EndElement(const XmlName& name, int depth) override;
  void Text(std::string_view text) override;

  // Whether the part was one of a worksheet at all.
  bool IsWorksheet() const { return is_worksheet_; }

 private:
  enum class Type { kNumber, kShared, kText, kBoolean, kError, kDate };

  static Type TypeOf(std::string_view name);
  void StartRow(const XmlElement& element);
  void StartCell(const XmlElement& element);
  bool StartContent(const XmlElement& element);
  void EndCell();
  void AddCell();
  void AddSharedText();
  void DoubtFormula(bool is_zero);
  void AddText(TextRange text);
  void AddTyped(const TypedNumber& typed);

  const SharedStrings& strings_;
  const std::vector<std::uint8_t>& shows_date_;
  const XlsxGlobals& globals_;
  SheetCells& cells_;
  bool is_worksheet_ = false;
  std::uint32_t row_ = 0;  // of the next cell, zero-based, as is
  std::uint32_t column_ = 0;
  std::uint32_t next_row_ = 0;

  // The cell at hand.
  Type type_ = Type::kNumber;
  std::size_t format_ = 0;
  bool has_value_ = false;
  bool has_formula_ = false;
  bool has_inline_text_ = false;
  std::uint32_t inline_start_ = 0;  // in the arena of the cells
  bool is_in_value_ = false;
  std::string value_;
  XlsxTextReader inline_text_;
};

}  // namespace korvex
