// Workbooks that are one XML document: OpenDocument spreadsheets and SpreadsheetML.
#include <gmock/gmock.h>

#include "tests/spreadsheet/opened_workbook.h"
#include "tests/spreadsheet/zip_bytes.h"

namespace korvex::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

const std::string kSpreadsheetType = "application/vnd.oasis.opendocument.spreadsheet";

std::string OdsContent(const std::string& tables) {
  std::string names;
  for (const char* name : {"office", "table", "text"}) {
    names +=
        " xmlns:" + std::string(name) + "='urn:oasis:names:tc:opendocument:xmlns:" + name + ":1.0'";
  }
  return "<office:document-content xmlns:calcext='urn:org:documentfoundation:names:experimental:"
         "calc:xmlns:calcext:1.0'" +
         names + "><office:body><office:spreadsheet>" + tables +
         "</office:spreadsheet></office:body></office:document-content>";
}

Bytes Ods(const std::string& tables) {
  return Zip({{"mimetype", kSpreadsheetType}, {"content.xml", OdsContent(tables)}});
}

// Cells of one row, with the prefixes that tests leave out.
Bytes OdsRow(const std::string& cells) {
  return Ods("<table:table table:name='data'><table:table-row>" + cells +
             "</table:table-row></table:table>");
}

std::string Cell(const std::string& attributes, const std::string& content = "") {
  return "<table:table-cell " + attributes + ">" + content + "</table:table-cell>";
}

TEST(OdsWorkbook, GivesTheValuesOfItsCells) {
  const std::string kFloat = "office:value-type='float' office:value=";
  const struct {
    std::string cells;
    std::string listing;
  } cases[] = {
      {Cell(kFloat + "'0.25'") +
           Cell("office:value-type='percentage' office:value='0.5' "
                "table:number-columns-repeated='2'") +
           Cell("table:number-columns-repeated='3'") +
           "<table:covered-table-cell office:value-type='currency' office:value='7'/>",
       "1,1 number 0.25 | 1,2 number 0.5 | 1,3 number 0.5 | 1,7 number 7"},
      {Cell("office:value-type='date' office:date-value='2002-12-03T10:15:00.000000000'") +
           Cell("office:value-type='time' office:time-value='PT06H30M00S'") +
           Cell("office:value-type='time' office:time-value='-PT1H'") +
           Cell("office:value-type='date' office:date-value='29279-01-24'"),
       "1,1 date 12/3/2002 10:15:00 AM | 1,2 date 6:30:00 AM | 1,3 number -4.16666666666667E-02 | "
       "1,4 number 10000000"},
      {Cell("office:value-type='boolean' office:boolean-value='true'") +
           Cell("table:formula='of:=FALSE()' " + kFloat + "'0'"),
       "1,1 boolean True | 1,2 boolean False"},
      {Cell("office:value-type='string'",
            "<text:p> two\n  <text:span>words</text:span> <text:s text:c='2'/>x<text:tab/>"
            "<text:note>n</text:note></text:p><text:p>l<text:line-break/>m</text:p>"
            "<office:annotation><text:p>note</text:p></office:annotation>"),
       "1,1 text two words   x\t\nl\nm"},
      {Cell("office:value-type='string' office:string-value='a  b'", "<text:p>c</text:p>") +
           Cell("office:value-type='string'", "<text:p/>") +
           Cell("table:formula='of:=\"\"'", "<text:p/>"),
       "1,1 text a  b | 1,3 text "},
      {Cell("table:formula='of:=A2' office:value-type='string' office:string-value='' "
            "calcext:value-type='error'",
            "<text:p>#REF!</text:p>") +
           Cell("table:formula='of:=A2' " + kFloat + "'0'", "<text:p>Err:503</text:p>") +
           Cell("table:formula='of:=A2'") +
           Cell("office:value-type='date' office:date-value=''", "<text:p/>"),
       "1,1 error Error 2023 | 1,2 error Error 2036 | 1,3 uncalculated | "
       "1,4 error Error 2042"},
  };
  for (const auto& test : cases) EXPECT_EQ(ListingOf(OdsRow(test.cells)), test.listing);
  const Bytes untyped = Zip({{"META-INF/manifest.xml", "<m/>"}, {"content.xml", OdsContent("")}});
  EXPECT_EQ(OpenedWorkbook(untyped).Sheets().size(), 0u);
}

TEST(OdsWorkbook, RepeatsRowsAndFindsTables) {
  const std::string one = Cell("office:value-type='float' office:value='1'");
  OpenedWorkbook workbook(
      Ods("<table:table table:name=\"'file:///a.ods'#$data\"><table:table-row>" + one +
          "</table:table-row></table:table><table:table table:name='data'>"
          "<table:table-row table:number-rows-repeated='2'/><table:table-row-group>"
          "<table:table-row table:number-rows-repeated='2'>" +
          one + Cell("table:number-columns-repeated='16383'", "<table:table/>") +
          "</table:table-row></table:table-row-group><table:table-row "
          "table:number-rows-repeated='1048572'>" +
          Cell("table:style-name='ce1'") +
          "</table:table-row></table:table><table:table table:name='more'/>"));
  ASSERT_EQ(workbook.Sheets().size(), 2u);
  EXPECT_EQ(workbook.Sheets()[0].name, "data");
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(Listing(workbook.Cells(0)), "3,1 number 1 | 4,1 number 1");
  }
  EXPECT_EQ(workbook.Cells(0).LastCell(), (CellAddress{4, 1}));
}

TEST(OdsWorkbook, RefusesWhatCannotBeRead) {
  const std::string full =
      "<table:table><table:table-row table:number-rows-repeated='1048576'>" +
      Cell("office:value-type='float' office:value='1' table:number-columns-repeated='16384'") +
      "</table:table-row></table:table>";
  const Bytes manifest = "<manifest:encryption-data/>";
  const struct {
    Bytes file;
    const char* cause;
  } cases[] = {
      {Ods("<table:table><table:table-row table:number-rows-repeated='1048575'/><table:table-row "
           "table:number-rows-repeated='2'>" +
           Cell("office:value-type='float' office:value='1'") + "</table:table-row></table:table>"),
       "is damaged: it has a value in cell A1048577, outside of every worksheet"},
      {Zip({{"mimetype", kSpreadsheetType}, {"META-INF/manifest.xml", manifest}}),
       "needs a password: it is an encrypted OpenDocument spreadsheet"},
      {Zip({{"mimetype", "application/vnd.oasis.opendocument.text"}}),
       "is not a workbook: it is an OpenDocument file without a spreadsheet"},
      {Zip({{"mimetype", kSpreadsheetType}}), "is damaged: its part content.xml is missing"},
      {"<office:document office:mimetype='" + kSpreadsheetType + "' xmlns:office='urn:x'",
       "ends after 102 bytes, in the middle of its XML"},
  };
  for (const auto& test : cases) EXPECT_EQ(RefusalOf(test.file), test.cause);
  EXPECT_THAT(RefusalOf(Ods(full)), MatchesRegex("takes more than 268,.* bytes of memory"));
}

// One changed byte in a document without a check sum makes names that a reader would skip, and with
// them the cells or their places.
TEST(FlatDocuments, RefuseNamesThatDamageMade) {
  std::string flat = OdsContent(
      "<table:table table:name='data'><table:table-column/><table:table-row "
      "table:number-rows-repeated='2'><table:table-cell table:number-columns-repeated='2'/>" +
      Cell("office:value-type='float' office:value='0.5'", "<text:p>0.5</text:p>") +
      "</table:table-row></table:table>");
  for (std::size_t at = flat.find("document-content"); at != std::string::npos;
       at = flat.find("document-content")) {
    flat.erase(at + 8, 8);
  }
  flat.insert(flat.find(' '), " office:mimetype='" + kSpreadsheetType + "'");
  const std::string kHead =
      "<Workbook xmlns='urn:schemas-microsoft-com:office:spreadsheet' "
      "xmlns:ss='urn:schemas-microsoft-com:office:spreadsheet'>";
  const std::string ml =
      kHead +
      "<Styles><Style ss:ID='d'><NumberFormat ss:Format='Short Date'/></Style></Styles>"
      "<Worksheet ss:Name='data'><Table><Column/><Row ss:Index='3'><Cell ss:Index='3'>"
      "<Data ss:Type='Number'>0.5</Data></Cell><Cell/><Cell ss:Index='9' ss:StyleID='d'>"
      "<Data ss:Type='Number'>37593</Data></Cell></Row></Table></Worksheet></Workbook>";
  EXPECT_EQ(ListingOf(flat), "1,3 number 0.5 | 2,3 number 0.5");
  EXPECT_EQ(ListingOf(ml), "3,3 number 0.5 | 3,9 date 12/3/2002");
  const struct {
    const std::string& document;
    const char* from;
    const char* to;
    const char* cause;
  } cases[] = {
      {flat, "table-cell table:number-columns-r", "table-celm table:number-columns-r",
       "table-celm"},
      {flat, "columns-repeated", "columns-repeatee", "number-columns-repeatee"},
      {flat, "rows-repeated='2'", "rows-repeated='B'", "\"B\""},
      {flat, "office:value=", "office:valve=", "valve"},
      {flat, "'float'", "'flmat'", "flmat"},
      {flat, "='0.5'", "='0.u'", "0.u"},
      {flat, "</table:table-cell><", "</table:table-cell>x<", "text between its elements"},
      {ml, "<Cell/>", "<Cehl/>", "Cehl"},
      {ml, "<Column/>", "<Rolumn/>", "Rolumn"},
      {ml, "NumberFormat", "NumberGormat", "NumberGormat"},
      {ml, "Cell ss:Index", "Cell ss:Indey", "Indey"},
      {ml, "Row ss:Index", "Row ss:Hndex", "Hndex"},
      {ml, "Index='3'><Data", "Index='s'><Data", "\"s\""},
      {ml, "Index='9'", "Index='1'", "rows or cells go backwards, from 4 to 1"},
      {ml, "StyleID='d'", "StyleID='e'", "\"e\""},
      {ml, "'Number'", "'Nulber'", "Nulber"},
      {ml, ">0.5<", ">0.u<", "cell C3 does not hold the Number that it should"},
      {ml, "</Cell><", "</Cell>x<", "text between its elements"},
  };
  for (const auto& test : cases) {
    std::string damaged = test.document;
    damaged.replace(damaged.find(test.from), std::string(test.from).size(), test.to);
    const std::string cause = RefusalOf(damaged);
    EXPECT_THAT(cause, StartsWith("is damaged: ")) << test.from;
    EXPECT_THAT(cause, HasSubstr(test.cause));
  }
}

TEST(SpreadsheetMlWorkbook, GivesItsSheetsAndCells) {
  const Bytes file =
      "<?xml version='1.0' encoding='windows-1252'?>\n<?mso-application progid='Excel.Sheet'?>"
      "<Workbook xmlns='urn:schemas-microsoft-com:office:spreadsheet' "
      "xmlns:ss='urn:schemas-microsoft-com:office:spreadsheet' "
      "xmlns:x='urn:schemas-microsoft-com:office:excel'><Styles><Style ss:ID='d'><NumberFormat "
      "ss:Format='Short Date'/></Style><Style ss:ID='e' ss:Parent='d'/><Style ss:ID='n'>"
      "<NumberFormat ss:Format='Standard'/></Style></Styles><Worksheet ss:Name='data'><Table>"
      "<Row ss:Index='2'><Cell><Data ss:Type='String'>\xB5M <B>bold</B>&#10;x</Data><Comment>"
      "<Data>c</Data></Comment></Cell><Cell ss:MergeAcross='1'><Data ss:Type='Number'>0.5</Data>"
      "</Cell><Cell ss:StyleID='n'><Data ss:Type='Number'>7</Data></Cell><Cell ss:Index='7' "
      "ss:StyleID='e'><Data ss:Type='Number'>37593</Data></Cell></Row><Row ss:Span='2'/><Row><Cell>"
      "<Data ss:Type='DateTime'>2002-12-03T12:00:00.000</Data></Cell><Cell><Data "
      "ss:Type='DateTime'>1899-12-31T30:30:00.000</Data></Cell><Cell><Data ss:Type='Boolean'>1"
      "</Data></Cell><Cell><Data ss:Type='Error'>#N/A</Data></Cell><Cell ss:Formula='=A1'/><Cell "
      "ss:StyleID='d' ss:MergeAcross='9'/></Row></Table><x:WorksheetOptions><x:Visible>SheetHidden"
      "</x:Visible></x:WorksheetOptions></Worksheet><Worksheet ss:Name='x'/></Workbook>";
  Bytes unusual = "\xEF\xBB\xBF\r\n\t" + file;
  unusual.insert(unusual.find("<Workbook"), "<!-- " + Bytes(9000, '>') + " -->");
  OpenedWorkbook workbook(unusual);
  EXPECT_EQ(workbook.Sheets()[1].name, "x");
  EXPECT_EQ(Listing(workbook.Cells(0)),
            "2,1 text µM bold\nx | 2,2 number 0.5 | 2,4 number 7 | 2,7 date 12/3/2002 | 6,1 date "
            "12/3/2002 12:00:00 PM | 6,2 date 12/31/1899 6:30:00 AM | 6,3 boolean True | 6,4 error "
            "Error 2042 "
            "| 6,5 uncalculated");
  EXPECT_EQ(workbook.Cells(0).LastCell(), (CellAddress{6, 7}));
  EXPECT_EQ(RefusalOf(file.substr(0, 700)), "ends after 700 bytes, in the middle of its XML");
  EXPECT_EQ(RefusalOf(Bytes(file).replace(file.find("1252"), 4, "932")),
            "is damaged: its XML is not sound XML in line 1 (unknown encoding)");
}

}  // namespace
}  // namespace korvex::test
