#include "spreadsheet/xlsx/xlsx_sheet_reader.h"

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/bytes/xml_names.h"
#include "spreadsheet/cells/cell_place.h"
#include "spreadsheet/cells/typed_value.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr int kCellDepth = 4;

// None unless the whole text, but for blanks, is a number.
std::optional<std::uint32_t> ReadWhole(std::string_view text) {
  return ReadDigits(TrimXmlBlanks(text));
}

}  // namespace

XlsxSheetReader::Type XlsxSheetReader::TypeOf(std::string_view name) {
  if (name == "s") return Type::kShared;
  if (name == "str") return Type::kText;
  if (name == "b") return Type::kBoolean;
  if (name == "e") return Type::kError;
  return name == "d" ? Type::kDate : Type::kNumber;
}

// Where an element lies tells what it can be, so that each of the many is compared with few names.
bool XlsxSheetReader::StartElement(const XmlElement& element) {
  switch (element.Depth()) {
    case 1:
      return is_worksheet_ = element.Is(xlsx::kMain, "worksheet");
    case 2:
      return element.Is(xlsx::kMain, "sheetData");
    case 3:
      if (!element.Is(xlsx::kMain, "row")) return false;
      StartRow(element);
      return true;
    case kCellDepth:
      if (!element.Is(xlsx::kMain, "c")) return false;
      StartCell(element);
      return true;
    case kCellDepth + 1:
      return StartContent(element);
    default:
      return !is_in_value_ && inline_text_.Start(element);
  }
}

// A number that cannot be read is as good as none: the row follows the one before.
void XlsxSheetReader::StartRow(const XmlElement& element) {
  row_ = next_row_;
  if (const auto number = element.Attribute("r")) {
    if (const auto row = ReadWhole(*number); row && *row > 0) row_ = *row - 1;
  }
  next_row_ = row_ + 1;
  column_ = 0;
}

// A cell's name says its place. Programs that leave it out write the cells of a row without gaps.
void XlsxSheetReader::StartCell(const XmlElement& element) {
  type_ = Type::kNumber;
  format_ = 0;
  for (const XmlAttribute& attribute : element.Attributes()) {
    if (attribute.name.space != kNoNamespace || attribute.name.local.size() != 1) continue;
    switch (attribute.name.local.front()) {
      case 'r':
        if (const std::optional<CellPlace> place = ReadCellName(attribute.value)) {
          row_ = place->row;
          column_ = place->column;
        }
        break;
      case 't':
        type_ = TypeOf(attribute.value);
        break;
      case 's':
        // A format that the styles do not have is none.
        format_ = ReadWhole(attribute.value).value_or(0);
        break;
      default:
        break;
    }
  }
  has_value_ = false;
  has_formula_ = false;
  has_inline_text_ = false;
  value_.Clear();
}

// An empty <v/> counts as a value: a formula that gives "" has one.
bool XlsxSheetReader::StartContent(const XmlElement& element) {
  if (element.Is(xlsx::kMain, "v")) return has_value_ = is_in_value_ = true;
  if (element.Is(xlsx::kMain, "f")) has_formula_ = true;
  if (!element.Is(xlsx::kMain, "is")) return false;
  has_inline_text_ = true;
  inline_start_ = cells_.OwnTexts().Size();
  return true;
}

void XlsxSheetReader::Text(std::string_view text) {
  if (is_in_value_) {
    value_.Append(text);
  } else {
    inline_text_.Text(text);
  }
}

void XlsxSheetReader::KeepText() {
  value_.Keep();
  inline_text_.KeepText();
}

void XlsxSheetReader::EndElement(const XmlName& name, int depth) {
  if (depth == kCellDepth) {
    EndCell();
    ++column_;
  } else if (depth == kCellDepth - 1) {
    CheckMemory();
  } else if (depth == kCellDepth + 1) {
    is_in_value_ = false;
  } else if (depth > kCellDepth + 1) {
    inline_text_.End(name, cells_.OwnTexts());
    CheckMemory();
  }
}

// A formatted blank outside of the sheet loses nothing; a value would be lost.
void XlsxSheetReader::EndCell() {
  if (row_ < kMostXmlRows && column_ < kMostXmlColumns) return AddCell();
  if (has_value_ || has_formula_ || has_inline_text_) RefuseOutside({row_, column_});
}

// Writers do not always keep to the types: a value that is not of its type is kept as text.
void XlsxSheetReader::AddCell() {
  TextArena& texts = cells_.OwnTexts();
  const std::string_view value = value_.View();
  if (has_inline_text_) return AddText(texts.RangeSince(inline_start_));
  if (type_ == Type::kText && has_value_) {
    const std::uint32_t start = texts.Size();
    AppendEscapedText(value, texts);
    const TextRange text = texts.RangeSince(start);
    AddText(text);
    return DoubtFormula(text.length == 0);
  }
  if (TrimXmlBlanks(value).empty()) {
    if (has_formula_) {
      AddTyped({CellKind::kError, kNotAvailableError});
      return cells_.LoseLast();
    }
    return cells_.AddBlanks(row_, static_cast<std::uint16_t>(column_), 1);
  }
  switch (type_) {
    case Type::kShared:
      return AddSharedText(value);
    case Type::kError:
      AddTyped({CellKind::kError, static_cast<double>(ErrorCode(value))});
      return DoubtFormula(false);
    case Type::kBoolean:
      AddTyped({CellKind::kBoolean, value == "1" || value == "true" ? 1.0 : 0.0});
      return DoubtFormula(false);
    case Type::kDate:
      if (const std::optional<DayAndTime> date = ReadIsoDate(value)) {
        return AddTyped(TypeDate(*date, globals_.uses_1904));
      }
      break;
    default:
      break;
  }
  if (const std::optional<double> number = ReadNumber(value)) {
    const DateForm form = format_ < date_forms_.size() ? date_forms_[format_] : DateForm::kNone;
    AddTyped(TypeNumber(*number, form, globals_.uses_1904));
    return DoubtFormula(*number == 0);
  }
  AddText(texts.Append(value));
}

void XlsxSheetReader::AddSharedText(std::string_view number) {
  const std::optional<std::uint32_t> index = ReadWhole(number);
  if (!index || *index >= strings_.Count()) {
    const std::string shown =
        index ? GroupedDigits(std::uint64_t{*index} + 1) : std::string(number);
    Refuse("is damaged: cell " + CellName({row_, column_}) + " shows text number " + shown +
           " of the workbook's texts, of which " + GroupedDigits(strings_.Count()) +
           " can be read");
  }
  cells_.AddSharedText(row_, static_cast<std::uint16_t>(column_), strings_.Range(*index));
}

// Whether the results are right is decided when the sheet is complete (XlsxWorkbook::ReadSheet).
void XlsxSheetReader::DoubtFormula(bool is_zero) {
  if (has_formula_ && globals_.calculates_on_load) {
    cells_.DoubtLast(DoubtGround::kAsksForCalculation, is_zero);
  }
}

void XlsxSheetReader::CheckMemory() const {
  budget_.CheckMemory(strings_.UsedMemory() + cells_.UsedMemory());
}

void XlsxSheetReader::AddText(TextRange text) {
  CheckMemory();
  cells_.AddOwnText(row_, static_cast<std::uint16_t>(column_), text);
}

void XlsxSheetReader::AddTyped(const TypedNumber& typed) {
  cells_.AddNumber(row_, static_cast<std::uint16_t>(column_), typed.kind, typed.number);
}

}  // namespace korvex
