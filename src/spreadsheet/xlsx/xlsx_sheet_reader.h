// Reads the cells of one worksheet of an .xlsx workbook.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/text_arena.h"
#include "spreadsheet/bytes/xml_parser.h"
#include "spreadsheet/cells/sheet_cells.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/xlsx/xlsx_globals.h"
#include "spreadsheet/xlsx/xlsx_text.h"

namespace korvex {

// Takes the elements of the part of a worksheet:
//   <worksheet><sheetData><row r="7"><c r="B7" s="format" t="type"> <f/> <v/> <is/>
// A cell's formula is in <f>, its value in <v>. Rows and cells without r follow the one before.
// Types:
//   n, or none  number                   b  Boolean
//   s           index of a shared text   e  name of an error
//   str         text                     d  ISO date
//   inlineStr   text in <is>
// A formula without a result was never calculated. If the workbook asks to be calculated when it is
// opened, and all results of a sheet are zero or empty, none of them was.
class XlsxSheetReader : public XmlHandler {
 public:
  // All must outlive the reader. `date_forms` is by index of the cell format.
  XlsxSheetReader(const SharedStrings& strings, const std::vector<DateForm>& date_forms,
                  const XlsxGlobals& globals, const ReadBudget& budget, SheetCells& cells)
      : strings_(strings),
        date_forms_(date_forms),
        globals_(globals),
        budget_(budget),
        cells_(cells) {}

  bool StartElement(const XmlElement& element) override;
  void EndElement(const XmlName& name, int depth) override;
  void Text(std::string_view text) override;
  void KeepText() override;

  // Whether the part holds a worksheet at all.
  bool IsWorksheet() const { return is_worksheet_; }

 private:
  enum class Type { kNumber, kShared, kText, kBoolean, kError, kDate };

  static Type TypeOf(std::string_view name);
  void StartRow(const XmlElement& element);
  void StartCell(const XmlElement& element);
  bool StartContent(const XmlElement& element);
  void EndCell();
  void AddCell();
  void AddSharedText(std::string_view number);
  void DoubtFormula(bool is_zero);
  // Once a row, and for each text of its own: rows hold few cells, but texts can be long.
  void CheckMemory() const;
  void AddText(TextRange text);
  void AddTyped(const TypedNumber& typed);

  const SharedStrings& strings_;
  const std::vector<DateForm>& date_forms_;
  const XlsxGlobals& globals_;
  const ReadBudget& budget_;
  SheetCells& cells_;
  bool is_worksheet_ = false;
  std::uint32_t row_ = 0;  // of the next cell, zero-based, as is
  std::uint32_t column_ = 0;
  std::uint32_t next_row_ = 0;

  // The current cell.
  Type type_ = Type::kNumber;
  std::size_t format_ = 0;
  bool has_value_ = false;
  bool has_formula_ = false;
  bool has_inline_text_ = false;
  std::uint32_t inline_start_ = 0;  // in the arena of the cells
  bool is_in_value_ = false;
  XmlText value_;
  XlsxTextReader inline_text_;
};

}  // namespace korvex
