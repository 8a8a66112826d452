// Reads the tables of an OpenDocument spreadsheet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/xml_parser.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/ods/document_workbook.h"

// Namespaces of OpenDocument files.
namespace korvex::ods {

inline constexpr char kOffice = 'o';
inline constexpr char kTable = 't';
inline constexpr char kText = 'x';
inline constexpr char kCalc = 'c';  // what spreadsheet programs add to the standard

inline constexpr XmlNamespace kNamespaces[] = {
    {"urn:oasis:names:tc:opendocument:xmlns:table:1.0", kTable},
    {"urn:oasis:names:tc:opendocument:xmlns:text:1.0", kText},
    {"urn:oasis:names:tc:opendocument:xmlns:office:1.0", kOffice},
    {"urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0", kCalc},
};

}  // namespace korvex::ods

namespace korvex {

// Reads the text of a cell: paragraphs <text:p>, with a line end between two. In a paragraph any
// white space is one blank; <text:s text:c="3"/>, <text:tab/> and <text:line-break/> stand for
// blanks, tabs and line ends. Notes are not part of the text.
class OdsTextReader {
 public:
  // `is_wanted` when anybody will ask for the text: most cells have their value in an attribute.
  void Clear(bool is_wanted);
  bool Start(const XmlElement& element);
  void Append(std::string_view text);
  void End(const XmlName& name);

  bool IsInParagraph() const { return is_in_paragraph_; }
  bool HasParagraph() const { return has_paragraph_; }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
  bool is_wanted_ = true;
  bool has_paragraph_ = false;
  bool is_in_paragraph_ = false;
  bool is_after_space_ = false;
};

// Takes the elements of the document, of which these count:
//   <table:table table:name="data">
//     <table:table-row-group> …                           groups of rows, any number deep
//       <table:table-row table:number-rows-repeated="3">
//         <table:table-cell table:number-columns-repeated="2"
//                           office:value-type="float" office:value="0.5">
// Types and their attributes:
//   float, percentage, currency  office:value
//   date, time                   office:date-value, office:time-value (a duration)
//   boolean                      office:boolean-value
//   string                       office:string-value, else the text in the cell
// Rows and cells can be repeated, empty ones up to the end of the sheet; only values become cells
// here. Unlike the serial numbers of .xls, times do not depend on the date system. A formula
// without a result was never calculated. A typed cell without its value is #N/A.
class OdsReader : public XmlHandler {
 public:
  // `has_check_sum` when the document comes from an archive, whose check sums show damage.
  OdsReader(SheetCollector& sheets, bool has_check_sum)
      : sheets_(sheets), has_check_sum_(has_check_sum) {}

  bool StartElement(const XmlElement& element) override;
  void EndElement(const XmlName& name, int depth) override;
  void Text(std::string_view text) override;

  // Whether the document is a spreadsheet at all.
  bool HasSpreadsheet() const { return has_spreadsheet_; }

 private:
  // The type that newer programs give beside the standard's. Without it an error is known only by
  // the text of the cell.
  enum class Mark { kNone, kValue, kError };
  struct RowCell {
    std::uint32_t begin;  // first column
    std::uint32_t end;    // after the last
    TypedNumber value;
    TextRange text;
    bool is_uncalculated;
  };

  // The attributes of a cell that count.
  struct CellAttributes {
    std::optional<std::string_view> repeated;
    std::optional<std::string_view> formula;
    std::optional<std::string_view> type;
    std::optional<std::string_view> mark;
    // By type: office:value, office:date-value …
    std::optional<std::string_view> value;
    std::optional<std::string_view> date;
    std::optional<std::string_view> time;
    std::optional<std::string_view> boolean;
    std::optional<std::string_view> string;
  };

  static CellAttributes AttributesOf(const XmlElement& element);
  std::uint32_t Repetitions(std::optional<std::string_view> digits) const;
  void CheckElement(const XmlElement& element) const;
  bool StartTable(const XmlElement& element);
  void StartCell(const XmlElement& element);
  void ReadValue(const CellAttributes& cell, std::string_view type);
  void EndCell();
  void Keep(TypedNumber value);
  void KeepText(std::string_view text);
  void EndRow();
  void AddCell(const RowCell& cell);

  SheetCollector& sheets_;
  bool has_check_sum_;
  bool has_spreadsheet_ = false;
  bool is_in_table_ = false;
  std::uint32_t row_ = 0;  // zero-based, as are columns
  std::uint32_t row_count_ = 1;
  std::uint32_t column_ = 0;
  std::vector<RowCell> row_cells_;

  // The current cell.
  std::uint32_t column_count_ = 1;
  bool has_formula_ = false;
  bool lacks_value_ = false;
  Mark mark_ = Mark::kNone;
  std::optional<TypedNumber> value_;
  std::optional<std::string> string_value_;
  OdsTextReader text_;
};

}  // namespace korvex
