#include "spreadsheet/xlsx/xlsx_writer.h"

#include <string>
#include <string_view>

#include "spreadsheet/bytes/block_queue.h"
#include "spreadsheet/bytes/zip_writer.h"
#include "spreadsheet/xlsx/xlsx_layout.h"
#include "spreadsheet/xlsx/xlsx_row_writer.h"
#include "workbook/sheet_rules.h"

namespace korvex {
namespace {

constexpr char kXml[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr char kMainNames[] = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr char kRelationNames[] =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr char kPackageNames[] = "http://schemas.openxmlformats.org/package/2006/";
constexpr char kMainType[] = "application/vnd.openxmlformats-officedocument.spreadsheetml.";

constexpr char kPackageRelations[] =
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
    R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/>)"
    R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties" Target="docProps/core.xml"/>)"
    R"(<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties" Target="docProps/app.xml"/>)"
    R"(</Relationships>)";

// When it was made is left out, so that equal cells give equal files.
constexpr char kCoreProperties[] =
    R"(<cp:coreProperties xmlns:cp="http://schemas.openxmlformats.org/package/2006/metadata/core-properties" xmlns:dc="http://purl.org/dc/elements/1.1/">)"
    R"(<dc:creator>KORVEX</dc:creator></cp:coreProperties>)";
constexpr char kProgramProperties[] =
    R"(<Properties xmlns="http://schemas.openxmlformats.org/officeDocument/2006/extended-properties">)"
    R"(<Application>KORVEX</Application></Properties>)";

// The formats of cellXfs are in the order of XlsxFormat; the number formats are built in. Programs
// take two fills and the style "Normal" for granted.
constexpr char kStyles[] =
    R"(<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
    R"(<fonts count="1"><font><sz val="11"/><name val="Calibri"/><family val="2"/></font></fonts>)"
    R"(<fills count="2"><fill><patternFill patternType="none"/></fill>)"
    R"(<fill><patternFill patternType="gray125"/></fill></fills>)"
    R"(<borders count="1"><border><left/><right/><top/><bottom/><diagonal/></border></borders>)"
    R"(<cellStyleXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0"/></cellStyleXfs>)"
    R"(<cellXfs count="4"><xf numFmtId="0" fontId="0" fillId="0" borderId="0" xfId="0"/>)"
    R"(<xf numFmtId="22" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>)"
    R"(<xf numFmtId="14" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>)"
    R"(<xf numFmtId="21" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/></cellXfs>)"
    R"(<cellStyles count="1"><cellStyle name="Normal" xfId="0" builtinId="0"/></cellStyles>)"
    R"(<dxfs count="0"/></styleSheet>)";

// "sheet1.xml" for the first.
std::string SheetPart(std::size_t sheet) {
  return "sheet" + std::to_string(sheet + 1) + ".xml";
}

// The cells in use, as "A1:C9"; `absolute` is "$" to have "$A$1:$C$9".
std::string RangeOf(const XlsxLayout& layout, const std::string& absolute) {
  const std::string first = absolute + "A" + absolute + "1";
  if (layout.rows == 0) return first;
  return first + ":" + absolute + ColumnLetters(layout.columns) + absolute +
         std::to_string(layout.rows);
}

// Text between tags or in an attribute.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped.push_back(c);
    }
  }
  return escaped;
}

// The parts of the package, in the order in which they are written: programs that only look at the
// beginning of a file tell by its first parts what it is.
class Package {
 public:
  Package(const TextPool& texts, const std::vector<SheetContent>& sheets, ReplacementFile& file)
      : texts_(texts), sheets_(sheets), zip_(file) {
    for (const SheetContent& sheet : sheets) layouts_.push_back(LayOut(*sheet.cells, texts));
  }

  void Write() {
    Add("[Content_Types].xml", ContentTypes());
    Add("_rels/.rels", kPackageRelations);
    Add("xl/workbook.xml", Workbook());
    Add("xl/_rels/workbook.xml.rels", WorkbookRelations());
    Add("xl/styles.xml", kStyles);
    Add("docProps/core.xml", kCoreProperties);
    Add("docProps/app.xml", kProgramProperties);
    for (std::size_t sheet = 0; sheet < sheets_.size(); ++sheet) WriteSheet(sheet);
    zip_.Finish();
  }

 private:
  void Add(const char* name, const std::string& content) { zip_.AddPart(name, kXml + content); }

  std::string ContentTypes() const {
    std::string types = std::string("<Types xmlns=\"") + kPackageNames + "content-types\">" +
                        "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-"
                        "package.relationships+xml\"/>"
                        "<Default Extension=\"xml\" ContentType=\"application/xml\"/>";
    const auto add = [&types](const std::string& part, const std::string& type) {
      types += "<Override PartName=\"/" + part + "\" ContentType=\"" + type + "+xml\"/>";
    };
    add("xl/workbook.xml", std::string(kMainType) + "sheet.main");
    add("xl/styles.xml", std::string(kMainType) + "styles");
    for (std::size_t sheet = 0; sheet < sheets_.size(); ++sheet) {
      add("xl/worksheets/" + SheetPart(sheet), std::string(kMainType) + "worksheet");
    }
    add("docProps/core.xml", "application/vnd.openxmlformats-package.core-properties");
    add("docProps/app.xml", "application/vnd.openxmlformats-officedocument.extended-properties");
    return types + "</Types>";
  }

  std::string Workbook() const {
    std::string list;
    std::string filters;
    std::size_t active = 0;
    for (std::size_t sheet = 0; sheet < sheets_.size(); ++sheet) {
      const std::string number = std::to_string(sheet + 1);
      const std::string name = Escaped(sheets_[sheet].name);
      list +=
          "<sheet name=\"" + name + "\" sheetId=\"" + number + "\" r:id=\"rId" + number + "\"/>";
      if (sheets_[sheet].selected) active = sheet;
      if (layouts_[sheet].has_headers) filters += FilterName(sheet, name);
    }
    if (!filters.empty()) filters = "<definedNames>" + filters + "</definedNames>";
    return std::string("<workbook xmlns=\"") + kMainNames + "\" xmlns:r=\"" + kRelationNames +
           "\"><bookViews><workbookView activeTab=\"" + std::to_string(active) +
           "\"/></bookViews><sheets>" + list + "</sheets>" + filters + "</workbook>";
  }

  // Spreadsheet programs look for the range of a filter under a hidden name, too.
  std::string FilterName(std::size_t sheet, const std::string& name) const {
    std::string quoted;
    for (const char c : name) quoted.append(c == '\'' ? "''" : std::string(1, c));
    return "<definedName name=\"_xlnm._FilterDatabase\" localSheetId=\"" + std::to_string(sheet) +
           "\" hidden=\"1\">'" + quoted + "'!" + RangeOf(layouts_[sheet], "$") + "</definedName>";
  }

  std::string WorkbookRelations() const {
    std::string relations =
        std::string("<Relationships xmlns=\"") + kPackageNames + "relationships\">";
    const auto add = [&relations](std::size_t id, const std::string& type,
                                  const std::string& part) {
      relations += "<Relationship Id=\"rId" + std::to_string(id) + "\" Type=\"" + kRelationNames +
                   "/" + type + "\" Target=\"" + part + "\"/>";
    };
    for (std::size_t sheet = 0; sheet < sheets_.size(); ++sheet) {
      add(sheet + 1, "worksheet", "worksheets/" + SheetPart(sheet));
    }
    add(sheets_.size() + 1, "styles", "styles.xml");
    return relations + "</Relationships>";
  }

  void WriteSheet(std::size_t sheet) {
    const XlsxLayout& layout = layouts_[sheet];
    const std::string start = SheetStart(sheet);
    const std::string end = SheetEnd(layout);
    zip_.BeginPart("xl/worksheets/" + SheetPart(sheet),
                   start.size() + layout.most_bytes + end.size());
    zip_.Write(start);
    // Packing takes longer than making the rows.
    BlockQueue rows([this](std::string_view block) { zip_.Write(block); });
    XlsxRowWriter(*sheets_[sheet].cells, texts_, [&](std::string& block) {
      rows.Push(block);
    }).Write();
    rows.Finish();
    zip_.Write(end);
    zip_.EndPart();
  }

  std::string SheetStart(std::size_t sheet) const {
    const XlsxLayout& layout = layouts_[sheet];
    std::string start = kXml + std::string("<worksheet xmlns=\"") + kMainNames +
                        "\"><dimension ref=\"" + RangeOf(layout, "") + "\"/><sheetViews><sheetView";
    if (sheets_[sheet].selected) start += " tabSelected=\"1\"";
    start += " workbookViewId=\"0\"";
    start += layout.has_headers
                 ? "><pane ySplit=\"1\" topLeftCell=\"A2\" activePane=\"bottomLeft\" "
                   "state=\"frozen\"/><selection pane=\"bottomLeft\"/></sheetView>"
                 : "/>";
    start += "</sheetViews><sheetFormatPr defaultRowHeight=\"15\"/>" + Columns(layout);
    return start + "<sheetData>";
  }

  static std::string Columns(const XlsxLayout& layout) {
    std::string columns;
    for (std::size_t column = 0; column < layout.widths.size(); ++column) {
      if (layout.widths[column] == 0) continue;
      const std::string number = std::to_string(column + 1);
      columns += "<col min=\"" + number + "\" max=\"" + number + "\" width=\"" +
                 std::to_string(layout.widths[column]) + "\" customWidth=\"1\"/>";
    }
    return columns.empty() ? columns : "<cols>" + columns + "</cols>";
  }

  static std::string SheetEnd(const XlsxLayout& layout) {
    std::string end = "</sheetData>";
    if (layout.has_headers) end += "<autoFilter ref=\"" + RangeOf(layout, "") + "\"/>";
    return end +
           "<pageMargins left=\"0.7\" right=\"0.7\" top=\"0.75\" bottom=\"0.75\" header=\"0.3\" "
           "footer=\"0.3\"/></worksheet>";
  }

  const TextPool& texts_;
  const std::vector<SheetContent>& sheets_;
  std::vector<XlsxLayout> layouts_;
  ZipWriter zip_;
};

}  // namespace

void WriteXlsx(const TextPool& texts, const std::vector<SheetContent>& sheets,
               ReplacementFile& file) {
  Package(texts, sheets, file).Write();
}

}  // namespace korvex
