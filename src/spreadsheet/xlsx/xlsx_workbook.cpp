#include "spreadsheet/xlsx/xlsx_workbook.h"

#include <utility>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/xlsx/xlsx_sheet_reader.h"
#include "spreadsheet/xlsx/xlsx_text.h"

namespace korvex {
namespace {

// The shared texts: <sst><si>…</si><si>…</si>. Each <si> is a text, even an empty one, so that the
// numbers of those after it stay right.
class StringsHandler : public XmlHandler {
 public:
  StringsHandler(SharedStrings& strings, const ReadBudget& budget)
      : strings_(strings), budget_(budget) {}

  bool StartElement(const XmlElement& element) override {
    if (element.Depth() == 1) return element.Is(xlsx::kMain, "sst");
    if (element.Depth() == 2) return element.Is(xlsx::kMain, "si");
    return text_.Start(element);
  }
  void EndElement(const XmlName& name, int depth) override {
    if (depth == 2) strings_.EndText();
    if (depth > 2) text_.End(name, strings_.Texts());
    budget_.CheckMemory(strings_.UsedMemory());
  }
  void Text(std::string_view text) override { text_.Text(text); }
  void KeepText() override { text_.KeepText(); }

 private:
  SharedStrings& strings_;
  const ReadBudget& budget_;
  XlsxTextReader text_;
};

}  // namespace

XlsxWorkbook::XlsxWorkbook(ReadBuffers& buffers, ZipArchive archive)
    : buffers_(buffers),
      archive_(std::move(archive)),
      budget_(buffers.file.size(), buffers.given_up.get()),
      globals_(ReadXlsxGlobals(archive_, budget_)) {}

void XlsxWorkbook::ReadStrings() {
  SharedStrings& strings = buffers_.strings;
  strings.Clear();
  if (globals_.strings_part.empty()) return;
  StringsHandler handler(strings, budget_);
  ParseXmlPart(archive_, globals_.strings_part, budget_, xlsx::kNamespaces, handler);
}

// Formats and texts are read with the first sheet and serve all of them.
void XlsxWorkbook::ReadSheet(std::size_t index, SheetCells& cells) {
  if (!has_formats_and_strings_) {
    date_forms_ = ReadXlsxDateForms(archive_, globals_.styles_part, budget_);
    ReadStrings();
    has_formats_and_strings_ = true;
  }
  cells.Clear(&buffers_.strings.Arena(), SheetCells::Repeats::kAreDamage);
  const SheetInfo& sheet = globals_.sheets[index];
  if (sheet.kind == SheetKind::kWorksheet) {
    const std::string& name = globals_.sheet_parts[index];
    if (name.empty()) Refuse("is damaged: its sheet \"" + sheet.name + "\" has no part");
    XlsxSheetReader handler(buffers_.strings, date_forms_, globals_, budget_, cells);
    ParseXmlPart(archive_, name, budget_, xlsx::kNamespaces, handler);
    if (!handler.IsWorksheet()) {
      Refuse("is damaged: its part " + name + " does not hold a worksheet");
    }
  }
  cells.Finish(budget_);
  constexpr DoubtGround kGround = DoubtGround::kAsksForCalculation;
  if (cells.HasOnlyDoubts(kGround)) cells.ConfirmDoubts(kGround);
}

}  // namespace korvex
