#include "spreadsheet/ods/ods_reader.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/cells/typed_value.h"

namespace korvex {
namespace {

constexpr std::size_t kMostBlanks = 65536;  // more than a cell holds

// How often something is repeated: once when nothing says so. No sheet has more rows.
std::uint32_t ReadCount(std::optional<std::string_view> attribute) {
  if (!attribute) return 1;
  const std::string_view digits = *attribute;
  std::uint32_t count = 1;
  const auto error = std::from_chars(digits.data(), digits.data() + digits.size(), count).ec;
  if (error == std::errc::result_out_of_range) return kMostXmlRows;
  return std::clamp(count, 1u, kMostXmlRows);
}

bool IsIn(std::string_view text, std::initializer_list<std::string_view> list) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

std::string_view Value(const XmlElement& element, char space, std::string_view attribute) {
  return element.Attribute(space, attribute).value_or("");
}

// Formulas that use another file leave a copy of its cells as a sheet: 'file:///a.ods'#$data
bool IsCopyOfOtherFile(std::string_view name) {
  return name.starts_with("'") && name.find("'#$") != std::string_view::npos;
}

// The elements of a table other than rows and cells, and the attributes of rows and cells: all that
// a document without check sum may have there.
constexpr std::string_view kTableParts[] = {"table-row-group",
                                            "table-rows",
                                            "table-header-rows",
                                            "table-column",
                                            "table-columns",
                                            "table-column-group",
                                            "table-header-columns",
                                            "title",
                                            "desc",
                                            "table-source",
                                            "scenario",
                                            "shapes",
                                            "named-expressions",
                                            "detective",
                                            "cell-range-source",
                                            "table"};
constexpr XmlName kRowAttributes[] = {{ods::kTable, "style-name"},
                                      {ods::kTable, "default-cell-style-name"},
                                      {ods::kTable, "number-rows-repeated"},
                                      {ods::kTable, "visibility"}};
constexpr XmlName kCellAttributes[] = {{ods::kTable, "style-name"},
                                       {ods::kTable, "content-validation-name"},
                                       {ods::kTable, "formula"},
                                       {ods::kTable, "number-columns-repeated"},
                                       {ods::kTable, "number-columns-spanned"},
                                       {ods::kTable, "number-rows-spanned"},
                                       {ods::kTable, "number-matrix-columns-spanned"},
                                       {ods::kTable, "number-matrix-rows-spanned"},
                                       {ods::kTable, "protect"},
                                       {ods::kTable, "protected"},
                                       {ods::kOffice, "value-type"},
                                       {ods::kOffice, "value"},
                                       {ods::kOffice, "currency"},
                                       {ods::kOffice, "date-value"},
                                       {ods::kOffice, "time-value"},
                                       {ods::kOffice, "boolean-value"},
                                       {ods::kOffice, "string-value"},
                                       {ods::kCalc, "value-type"}};

// Of the formula after its prefix, which names the language: "of:=TRUE()".
bool IsTruth(std::string_view formula) {
  return formula.ends_with(":=TRUE()") || formula.ends_with(":=FALSE()");
}

}  // namespace

void OdsTextReader::Clear(bool is_wanted) {
  text_.clear();
  is_wanted_ = is_wanted;
  has_paragraph_ = false;
  is_in_paragraph_ = false;
}

bool OdsTextReader::Start(const XmlElement& element) {
  if (element.Name().space != ods::kText) return false;
  const std::string_view name = element.Name().local;
  if (!is_in_paragraph_) {
    if (name != "p" && name != "h") return false;
    if (has_paragraph_) text_ += '\n';
    has_paragraph_ = true;
    is_in_paragraph_ = true;
    is_after_space_ = true;
    return true;
  }
  if (name == "s") {
    const std::size_t room = kMostBlanks - std::min(text_.size(), kMostBlanks);
    text_.append(std::min<std::size_t>(ReadCount(element.Attribute(ods::kText, "c")), room), ' ');
  } else if (name == "tab") {
    text_ += '\t';
  } else if (name == "line-break") {
    text_ += '\n';
  } else {
    return !IsIn(name, {"note", "ruby-text"});
  }
  is_after_space_ = false;
  return false;
}

void OdsTextReader::Append(std::string_view text) {
  if (!is_in_paragraph_ || !is_wanted_) return;
  constexpr std::string_view kSpaces = " \t\n\r";
  const auto is_space = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
  while (!text.empty()) {
    const auto word =
        static_cast<std::size_t>(std::find_if(text.begin(), text.end(), is_space) - text.begin());
    text_ += text.substr(0, word);
    if (word > 0) is_after_space_ = false;
    if (word == text.size()) return;
    if (!is_after_space_) text_ += ' ';
    is_after_space_ = true;
    text.remove_prefix(std::min(text.find_first_not_of(kSpaces, word), text.size()));
  }
}

void OdsTextReader::End(const XmlName& name) {
  if (name.local == "p" || name.local == "h") is_in_paragraph_ = false;
}

std::uint32_t OdsReader::Repetitions(std::optional<std::string_view> digits) const {
  if (!digits) return 1;
  const bool is_number = digits->find_first_not_of("0123456789") == std::string_view::npos;
  if (!has_check_sum_ && !is_number) RefuseName(*digits);
  return ReadCount(digits);
}

// For an element of the table namespace within a table.
void OdsReader::CheckElement(const XmlElement& element) const {
  if (has_check_sum_) return;
  const std::string_view name = element.Name().local;
  if (name == "table-row") {
    CheckAttributes(element, kRowAttributes);
  } else if (name == "table-cell" || name == "covered-table-cell") {
    CheckAttributes(element, kCellAttributes);
  } else if (std::find(std::begin(kTableParts), std::end(kTableParts), name) ==
             std::end(kTableParts)) {
    RefuseName(name);
  }
}

// Only elements on the way to cells are entered; what is in all others is skipped.
bool OdsReader::StartElement(const XmlElement& element) {
  const XmlName& name = element.Name();
  switch (name.space) {
    case ods::kOffice:
      has_spreadsheet_ |= name.local == "spreadsheet";
      return IsIn(name.local, {"document", "document-content", "body", "spreadsheet"});
    case ods::kTable:
      break;
    default:
      return text_.Start(element);
  }
  if (is_in_table_) CheckElement(element);
  if (name.local == "table") return StartTable(element);
  if (!is_in_table_) return false;
  if (name.local == "table-row") {
    row_count_ = Repetitions(element.Attribute(ods::kTable, "number-rows-repeated"));
    return true;
  }
  if (name.local == "table-cell" || name.local == "covered-table-cell") {
    StartCell(element);
    return true;
  }
  return IsIn(name.local, {"table-row-group", "table-rows", "table-header-rows"});
}

// Tables also lie in cells, as subtables, and count as nothing.
bool OdsReader::StartTable(const XmlElement& element) {
  SheetInfo sheet;
  sheet.name = Value(element, ods::kTable, "name");
  if (is_in_table_ || IsCopyOfOtherFile(sheet.name)) return false;
  sheets_.Begin(std::move(sheet));
  row_ = 0;
  return is_in_table_ = true;
}

// In one go: looking for each of them would compare every name with every other.
OdsReader::CellAttributes OdsReader::AttributesOf(const XmlElement& element) {
  CellAttributes cell;
  for (const XmlAttribute& attribute : element.Attributes()) {
    const std::string_view name = attribute.name.local;
    std::optional<std::string_view>* place = nullptr;
    switch (attribute.name.space) {
      case ods::kOffice:
        place = name == "value-type"      ? &cell.type
                : name == "value"         ? &cell.value
                : name == "date-value"    ? &cell.date
                : name == "time-value"    ? &cell.time
                : name == "boolean-value" ? &cell.boolean
                : name == "string-value"  ? &cell.string
                                          : nullptr;
        break;
      case ods::kTable:
        if (name == "number-columns-repeated") place = &cell.repeated;
        if (name == "formula") place = &cell.formula;
        break;
      case ods::kCalc:
        if (name == "value-type") place = &cell.mark;
        break;
      default:
        break;
    }
    if (place != nullptr) *place = attribute.value;
  }
  return cell;
}

void OdsReader::StartCell(const XmlElement& element) {
  const CellAttributes cell = AttributesOf(element);
  column_count_ = Repetitions(cell.repeated);
  has_formula_ = cell.formula.has_value();
  mark_ = !cell.mark ? Mark::kNone : *cell.mark == "error" ? Mark::kError : Mark::kValue;
  value_.reset();
  string_value_.reset();
  // A formula that was not calculated is written without a type.
  lacks_value_ = has_formula_ && !cell.type;
  if (cell.type) ReadValue(cell, *cell.type);
  const bool may_be_error = mark_ == Mark::kError || (mark_ == Mark::kNone && has_formula_);
  text_.Clear(may_be_error || (!value_ && !string_value_));
}

// The class has a list of the types and the attributes of their values. A date that the calendar
// does not have leaves the cell to the text in it.
void OdsReader::ReadValue(const CellAttributes& cell, std::string_view type) {
  const bool is_number = IsIn(type, {"float", "percentage", "currency"});
  if (!has_check_sum_ && !is_number && !IsIn(type, {"string", "date", "time", "boolean", "void"})) {
    RefuseName(type);
  }
  const auto found = is_number           ? cell.value
                     : type == "string"  ? cell.string
                     : type == "date"    ? cell.date
                     : type == "time"    ? cell.time
                     : type == "boolean" ? cell.boolean
                                         : std::nullopt;
  lacks_value_ = is_number || IsIn(type, {"date", "time", "boolean"});
  if (!found) return;
  const std::string_view value = *found;
  std::optional<double> number;
  if (type == "string") {
    string_value_ = value;
  } else if (type == "boolean") {
    value_ = {CellKind::kBoolean, value == "true" ? 1.0 : 0.0};
  } else if (type == "date") {
    if (const std::optional<DayAndTime> date = ReadIsoDate(value)) number = date->Serial();
  } else {
    number = is_number ? ReadNumber(value) : ReadIsoDuration(value);
  }
  if (number) value_ = TypeNumber(*number, is_number ? DateForm::kNone : DateForm::kMoment, false);
  if (!has_check_sum_ && is_number && !number && !value.empty()) RefuseName(value);
  // Booleans that came from other formats are written as formulas of type float.
  if (number && is_number && IsTruth(cell.formula.value_or(""))) {
    value_ = {CellKind::kBoolean, *number != 0 ? 1.0 : 0.0};
  }
}

// Text stands only in paragraphs. The memory is checked here, too, since one paragraph may hold
// megabytes.
void OdsReader::Text(std::string_view text) {
  if (!is_in_table_) return;
  if (!has_check_sum_ && !text_.IsInParagraph()) CheckBlank(text);
  text_.Append(text);
  if (!text_.Text().empty()) sheets_.CheckMemory(text_.Text().size());
}

void OdsReader::EndElement(const XmlName& name, int) {
  if (name.space == ods::kText) {
    text_.End(name);
  } else if (name.space == ods::kTable) {
    if (name.local == "table-cell" || name.local == "covered-table-cell") return EndCell();
    if (name.local == "table-row") EndRow();
    if (name.local == "table") is_in_table_ = false;
  }
}

// The value of a cell, in this order: an error, the value of its type, the text of its attribute,
// the text in it. A paragraph without text is one only as the result of a formula.
void OdsReader::EndCell() {
  const std::string& shown = text_.Text();
  const bool is_old_error = mark_ == Mark::kNone && has_formula_ && IsErrorName(shown);
  if (mark_ == Mark::kError || is_old_error) {
    Keep({CellKind::kError, static_cast<double>(ErrorCode(shown))});
  } else if (value_) {
    Keep(*value_);
  } else if (string_value_) {
    KeepText(*string_value_);
  } else if (!shown.empty() || (has_formula_ && text_.HasParagraph())) {
    KeepText(shown);
  } else if (lacks_value_) {
    Keep({CellKind::kError, kNotAvailableError});
    row_cells_.back().is_uncalculated = has_formula_;
  }
  column_ = std::min(column_ + column_count_, kMostXmlColumns);
}

// Repetitions can reach beyond the end of the sheet, where values would be lost.
void OdsReader::Keep(TypedNumber value) {
  const std::uint32_t end = column_ + column_count_;
  if (row_ >= kMostXmlRows || end > kMostXmlColumns) RefuseOutside({row_, end - 1});
  row_cells_.push_back({column_, end, value, {}, false});
}

// The text is stored once, however often cell and row are repeated.
void OdsReader::KeepText(std::string_view text) {
  Keep({CellKind::kText, 0});
  SheetCells& cells = sheets_.Cells();
  row_cells_.back().text =
      cells.ShareText(static_cast<std::uint16_t>(column_), cells.OwnTexts().Append(text));
  sheets_.CheckMemory();
}

// A row is known only at its end; then it is added as often as it is repeated.
void OdsReader::EndRow() {
  const std::uint32_t end = std::min(row_ + row_count_, kMostXmlRows);
  if (!row_cells_.empty() && row_ + row_count_ > kMostXmlRows) {
    RefuseOutside({row_ + row_count_ - 1, row_cells_.front().begin});
  }
  for (; row_ < end && !row_cells_.empty(); ++row_) {
    sheets_.CheckMemory();
    for (const RowCell& cell : row_cells_) AddCell(cell);
  }
  row_ = end;
  column_ = 0;
  row_cells_.clear();
}

void OdsReader::AddCell(const RowCell& cell) {
  for (std::uint32_t i = cell.begin; i < cell.end; ++i) {
    const auto column = static_cast<std::uint16_t>(i);
    if (cell.value.kind == CellKind::kText) {
      sheets_.Cells().AddOwnText(row_, column, cell.text);
    } else {
      sheets_.Cells().AddNumber(row_, column, cell.value.kind, cell.value.number);
      if (cell.is_uncalculated) sheets_.Cells().LoseLast();
    }
  }
}

}  // namespace korvex
