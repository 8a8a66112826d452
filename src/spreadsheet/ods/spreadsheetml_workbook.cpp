#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/bytes/xml_parser.h"
#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/ods/document_workbook.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr char kMain = 's';
constexpr char kExcel = 'x';
constexpr XmlNamespace kNamespaces[] = {
    {"urn:schemas-microsoft-com:office:spreadsheet", kMain},
    {"urn:schemas-microsoft-com:office:excel", kExcel},
};

// The elements that may stand among rows and cells, and the attributes of rows and cells. There is
// never a check sum: what is not listed here is damage (document_workbook.h).
constexpr XmlName kRowAttributes[] = {
    {kMain, "AutoFitHeight"}, {kMain, "Caption"}, {kMain, "Height"}, {kMain, "Hidden"},
    {kMain, "Index"},         {kMain, "Span"},    {kMain, "StyleID"}};
constexpr XmlName kCellAttributes[] = {
    {kMain, "ArrayRange"}, {kMain, "Formula"},     {kMain, "HRef"},      {kExcel, "HRefScreenTip"},
    {kMain, "Index"},      {kMain, "MergeAcross"}, {kMain, "MergeDown"}, {kMain, "StyleID"}};
constexpr XmlName kDataAttributes[] = {{kMain, "Type"}, {kExcel, "Ticked"}};
constexpr std::string_view kStyleParts[] = {"Alignment", "Borders",      "Font",
                                            "Interior",  "NumberFormat", "Protection"};
constexpr std::string_view kTableParts[] = {"Column"};
constexpr std::string_view kCellParts[] = {"Comment", "NamedCell", "PhoneticText", "SmartTags"};
constexpr std::string_view kTypes[] = {"Number", "String", "DateTime", "Boolean", "Error"};

bool IsIn(std::string_view text, std::span<const std::string_view> list) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

// Refuses an element of the format's own that is not one of these.
void CheckElement(const XmlElement& element, std::span<const std::string_view> known) {
  const XmlName& name = element.Name();
  if (name.space == kMain && !IsIn(name.local, known)) RefuseName(name.local);
}

std::string_view Value(const XmlElement& element, std::string_view attribute) {
  return element.Attribute(kMain, attribute).value_or("");
}

// A number of rows or columns, cut to the rows of a sheet.
std::optional<std::uint32_t> ReadCount(const XmlElement& element, std::string_view attribute) {
  const std::string_view digits = Value(element, attribute);
  std::uint32_t count = 0;
  if (digits.empty()) return {};
  const char* const end = digits.data() + digits.size();
  const auto [rest, error] = std::from_chars(digits.data(), end, count);
  if (error == std::errc::invalid_argument || rest != end) RefuseName(digits);
  return error == std::errc() ? std::min(count, kMostXmlRows) : kMostXmlRows;
}

// The zero-based place of a row or cell: its index, or else `next`. Rows and cells never go
// backwards.
std::uint32_t NextIndex(const XmlElement& element, std::uint32_t next) {
  const std::optional<std::uint32_t> index = ReadCount(element, "Index");
  if (!index) return next;
  if (*index <= next) {
    Refuse("is damaged: its rows or cells go backwards, from " + GroupedDigits(next) + " to " +
           GroupedDigits(*index));
  }
  return *index - 1;
}

// Besides format texts there are names for built-in formats: "Short Date", "Standard".
DateForm FormOf(std::string_view format) {
  if (format.ends_with(" Date") || format.ends_with(" Time")) return DateForm::kMoment;
  for (const char* name : {"General", "General Number", "Currency", "Euro Currency", "Fixed",
                           "Standard", "Percent", "Scientific", "Yes/No", "True/False", "On/Off"}) {
    if (format == name) return DateForm::kNone;
  }
  return DateFormOf(format);
}

// The document:
//   <Workbook>
//     <x:ExcelWorkbook><x:Date1904/>
//     <Styles><Style ss:ID="s21" ss:Parent="s20"><NumberFormat ss:Format="Short Date"/>
//     <Worksheet ss:Name="data">
//       <Table ss:TopCell="1" ss:LeftCell="1"><Row ss:Index="3" ss:Span="1">
//         <Cell ss:Index="2" ss:MergeAcross="1" ss:StyleID="s21" ss:Formula="=A1">
//           <Data ss:Type="Number">0.5</Data>
// Indices count from 1; rows and cells without one follow the one before. Types: Number, String,
// which may have markup in it, DateTime, Boolean, Error. A Number that shows a date counts days in
// the workbook's date system; a DateTime is a calendar date.
class SpreadsheetMlReader : public XmlHandler {
 public:
  explicit SpreadsheetMlReader(SheetCollector& sheets) : sheets_(sheets) {}

  bool StartElement(const XmlElement& element) override;
  void EndElement(const XmlName& name, int depth) override;
  void Text(std::string_view text) override {
    if (collects_) {
      text_ += text;
    } else {
      CheckBlank(text);
    }
  }

 private:
  enum Depth { kWorkbook = 1, kPart, kTable, kRow, kCell, kData };

  bool StartPart(const XmlElement& element);
  bool StartInGlobals(const XmlElement& element);
  bool StartInSheet(const XmlElement& element);
  void StartRow(const XmlElement& element);
  void StartCell(const XmlElement& element);
  void EndCell();
  void AddNothing();
  void AddNumber(const TypedNumber& typed);

  SheetCollector& sheets_;
  std::map<std::string, DateForm, std::less<>> date_forms_;  // by style
  bool uses_1904_ = false;
  bool is_in_sheet_ = false;
  bool is_in_table_ = false;
  std::string style_;
  std::uint32_t next_row_ = 0;  // zero-based, as are the others
  std::uint32_t row_ = 0;
  std::uint32_t left_column_ = 0;
  std::uint32_t next_column_ = 0;

  // The current cell.
  std::uint32_t column_ = 0;
  DateForm cell_form_ = DateForm::kNone;
  bool has_style_ = false;
  bool has_formula_ = false;
  std::string type_;  // "" without data
  bool collects_ = false;
  std::string text_;
};

// Depths of elements tell what they are: cells of a sheet and formats of a style lie equally deep.
bool SpreadsheetMlReader::StartElement(const XmlElement& element) {
  switch (element.Depth()) {
    case kWorkbook:
      return element.Is(kMain, "Workbook");
    case kPart:
      return StartPart(element);
    case kTable:
      return is_in_sheet_ ? StartInSheet(element) : StartInGlobals(element);
    case kRow:
      if (is_in_table_ && element.Is(kMain, "Row")) {
        StartRow(element);
        return true;
      }
      if (is_in_table_) CheckElement(element, kTableParts);
      if (!is_in_sheet_) CheckElement(element, kStyleParts);
      if (!is_in_sheet_ && element.Is(kMain, "NumberFormat")) {
        date_forms_[style_] = FormOf(Value(element, "Format"));
      }
      return false;
    case kCell:
      if (!element.Is(kMain, "Cell")) {
        CheckElement(element, {});
        return false;
      }
      StartCell(element);
      return true;
    case kData:
      if (!element.Is(kMain, "Data")) {
        CheckElement(element, kCellParts);
        return false;
      }
      CheckAttributes(element, kDataAttributes);
      type_ = Value(element, "Type");
      if (!IsIn(type_, kTypes)) RefuseName(type_);
      text_.clear();
      return collects_ = true;
    default:
      return true;  // markup of a text
  }
}

bool SpreadsheetMlReader::StartPart(const XmlElement& element) {
  is_in_sheet_ = element.Is(kMain, "Worksheet");
  if (is_in_sheet_) {
    SheetInfo sheet;
    sheet.name = Value(element, "Name");
    sheets_.Begin(std::move(sheet));
    return true;
  }
  return element.Is(kMain, "Styles") || element.Is(kExcel, "ExcelWorkbook");
}

bool SpreadsheetMlReader::StartInGlobals(const XmlElement& element) {
  if (element.Is(kExcel, "Date1904")) uses_1904_ = true;
  if (!element.Is(kMain, "Style")) return false;
  style_ = Value(element, "ID");
  // A style has the format of its parent until its own comes.
  const auto parent = date_forms_.find(Value(element, "Parent"));
  date_forms_[style_] = parent != date_forms_.end() ? parent->second : DateForm::kNone;
  return true;
}

bool SpreadsheetMlReader::StartInSheet(const XmlElement& element) {
  is_in_table_ = element.Is(kMain, "Table");
  if (!is_in_table_) return false;
  next_row_ = std::max(ReadCount(element, "TopCell").value_or(1), 1u) - 1;
  left_column_ = std::max(ReadCount(element, "LeftCell").value_or(1), 1u) - 1;
  return true;
}

void SpreadsheetMlReader::StartRow(const XmlElement& element) {
  CheckAttributes(element, kRowAttributes);
  row_ = NextIndex(element, next_row_);
  next_row_ = std::min(row_ + 1 + ReadCount(element, "Span").value_or(0), kMostXmlRows);
  next_column_ = left_column_;
}

void SpreadsheetMlReader::StartCell(const XmlElement& element) {
  CheckAttributes(element, kCellAttributes);
  column_ = NextIndex(element, next_column_);
  next_column_ =
      std::min(column_ + 1 + ReadCount(element, "MergeAcross").value_or(0), kMostXmlRows);
  const std::string_view style = Value(element, "StyleID");
  const auto found = date_forms_.find(style);
  if (found == date_forms_.end() && !style.empty()) RefuseName(style);
  cell_form_ = found != date_forms_.end() ? found->second : DateForm::kNone;
  has_style_ = !style.empty();
  has_formula_ = !Value(element, "Formula").empty();
  type_.clear();
}

void SpreadsheetMlReader::EndElement(const XmlName&, int depth) {
  if (depth == kCell) EndCell();
  if (depth == kData) collects_ = false;
}

// A text that is no number or date of its type is kept as text only if it is blank; else it is
// damage.
void SpreadsheetMlReader::EndCell() {
  if (row_ >= kMostXmlRows || column_ >= kMostXmlColumns) {
    if (!type_.empty()) RefuseOutside({row_, column_});
    return;
  }
  const bool is_number = type_ == "Number" || type_ == "Boolean";
  if (type_.empty()) {
    AddNothing();
  } else if (type_ == "Error" || (has_formula_ && IsErrorName(text_))) {
    AddNumber({CellKind::kError, static_cast<double>(ErrorCode(text_))});
  } else if (const auto date = type_ == "DateTime" ? ReadIsoDate(text_) : std::nullopt) {
    AddNumber(TypeDate(*date, uses_1904_));
  } else if (const auto number = is_number ? ReadNumber(text_) : std::nullopt) {
    AddNumber(type_ == "Boolean" ? TypedNumber{CellKind::kBoolean, *number != 0 ? 1.0 : 0.0}
                                 : TypeNumber(*number, cell_form_, uses_1904_));
  } else if (type_ != "String" && text_.find_first_not_of(" \t\r\n") != std::string::npos) {
    Refuse("is damaged: cell " + CellName({row_, column_}) + " does not hold the " + type_ +
           " that it should");
  } else {
    SheetCells& cells = sheets_.Cells();
    cells.AddOwnText(row_, static_cast<std::uint16_t>(column_), cells.OwnTexts().Append(text_));
  }
}

void SpreadsheetMlReader::AddNothing() {
  if (has_formula_) {
    AddNumber({CellKind::kError, kNotAvailableError});
    return sheets_.Cells().LoseLast();
  }
  if (has_style_) sheets_.Cells().AddBlanks(row_, static_cast<std::uint16_t>(column_), 1);
}

void SpreadsheetMlReader::AddNumber(const TypedNumber& typed) {
  sheets_.Cells().AddNumber(row_, static_cast<std::uint16_t>(column_), typed.kind, typed.number);
}

}  // namespace

SpreadsheetMlWorkbook::SpreadsheetMlWorkbook(ReadBuffers& buffers) : DocumentWorkbook(buffers) {
  Load();
}

void SpreadsheetMlWorkbook::ReadDocument(ReadBudget&, SheetCollector& sheets) {
  SpreadsheetMlReader reader(sheets);
  ParseXml(SourceOf(Document()), "", kNamespaces, reader);
}

}  // namespace korvex
