#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <span>

#include "spreadsheet/bytes/zip_archive.h"
#include "tests/spreadsheet/opened_workbook.h"
#include "tests/spreadsheet/zip_bytes.h"
#include "text/text.h"

namespace korvex::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

const std::string kMain = "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"";

Bytes Workbook(const std::string& content) {
  return "<workbook " + kMain + " xmlns:r=\"" + kXlsxRelations + "\">" + content + "</workbook>";
}

// A workbook of one sheet. Format 0 is General, 1 a built-in date, 2 a date of its own.
struct XlsxBytes {
  std::string rows;
  std::string workbook = "";

  ZipParts Parts() const {
    return {
        {"_rels/.rels", Relationships(Relationship("a", "officeDocument", "/xl/workbook.xml"))},
        {"xl/workbook.xml",
         Workbook(workbook + "<sheets><sheet name=\"data\" r:id=\"s\"/></sheets>")},
        {"xl/_rels/workbook.xml.rels",
         Relationships(Relationship("s", "worksheet", "worksheets/sheet1.xml") +
                       Relationship("t", "sharedStrings", "sharedStrings.xml") +
                       Relationship("f", "styles", "styles.xml"))},
        {"xl/styles.xml", "<styleSheet " + kMain +
                              "><numFmts><numFmt numFmtId=\"170\" formatCode=\"yyyy\"/></numFmts>"
                              "<cellStyleXfs><xf numFmtId=\"14\"/></cellStyleXfs><cellXfs>"
                              "<xf/><xf numFmtId=\"22\"/><xf numFmtId=\"170\"/></cellXfs>"
                              "</styleSheet>"},
        {"xl/sharedStrings.xml",
         "<sst " + kMain +
             "><si><t>plate</t></si><si><r><t>Delta</t></r><r><rPr/><t xml:space=\"preserve\"> OD"
             "</t></r><rPh><t>x</t></rPh></si><si/></sst>"},
        {"xl/worksheets/sheet1.xml",
         "<worksheet " + kMain + "><sheetData>" + rows + "</sheetData></worksheet>"},
    };
  }
  Bytes Build() const { return Zip(Parts()); }
};

TEST(XlsxWorkbook, GivesTheValuesOfItsCells) {
  const struct {
    std::string cells;
    const char* listing;
  } cases[] = {
      {"<c><v>0.25</v></c><c r='D1'><v> 1E2 </v></c><c><v>1e999</v></c>",
       "1,1 number 0.25 | 1,4 number 100 | 1,5 error Error 2036"},
      {"<c t='s'><v>1</v></c><c t='s'><v>2</v></c><c t='s'><v>0</v></c>",
       "1,1 text Delta OD | 1,2 text  | 1,3 text plate"},
      {"<c t='inlineStr'><is><t> a</t><rPh><t>x</t></rPh></is></c>", "1,1 text  a"},
      {"<c t='str'><f>A2</f><v>_x03B1__xD83D__xDE00__xD83D_ _x005F_x0041_ _x1_</v></c>",
       "1,1 text α😀\xEF\xBF\xBD _x0041_ _x1_"},
      {"<c t='str'><f>A2</f><v/></c><c t='str'><f>A2</f></c><c t='str'/>",
       "1,1 text  | 1,2 uncalculated"},
      {"<c t='b'><v>1</v></c><c t='b'><v>0</v></c>", "1,1 boolean True | 1,2 boolean False"},
      {"<c t='e'><v>#DIV/0!</v></c><c t='e'><v>#SPILL!</v></c>",
       "1,1 error Error 2007 | 1,2 error Error 2015"},
      {"<c s='1'><v>37593.5</v></c><c s='2'><v>37593</v></c><c s='2'><v>-1</v></c>",
       "1,1 date 12/3/2002 12:00:00 PM | 1,2 date 12/3/2002 | 1,3 number -1"},
      {"<c t='d'><v>2002-12-03T10:15:00Z</v></c><c t='d'><v>2002-13-03</v></c><c "
       "t='d'><v>1900-01-01</v></c>",
       "1,1 date 12/3/2002 10:15:00 AM | 1,2 text 2002-13-03 | 1,3 date 12/31/1899"},
      {"<c><f>NOW()</f></c><c><v>x</v></c>", "1,1 uncalculated | 1,2 text x"},
      {"<c r='XFD1048576'><v>1</v></c><c/><c r='A1048577' s='1'/>", "1048576,16384 number 1"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ListingOf(XlsxBytes{"<row>" + test.cells + "</row>"}.Build()), test.listing);
  }
  EXPECT_EQ(ListingOf(XlsxBytes{"<row r='3'><c s='1'><v>36131.5</v></c></row><row><c><v>1</v></c>"
                                "</row>",
                                "<workbookPr date1904='1'/>"}
                          .Build()),
            "3,1 date 12/3/2002 12:00:00 PM | 4,1 number 1");
  OpenedWorkbook blanks(XlsxBytes{"<row><c><v>1</v></c><c r='C4' s='1'/></row>"}.Build());
  EXPECT_EQ(blanks.Cells().LastCell(), (CellAddress{4, 3}));
}

// It is unpacked and read piece by piece, which cut names, values and texts anywhere.
TEST(XlsxWorkbook, ReadsALargeSheetLikeASmallOne) {
  constexpr int kRows = 60000;
  const auto digits = [](int row) {
    return std::to_string(row * 7919LL) + std::string(row % 4, '0');
  };
  const auto number_text = [&](int row) { return "0." + digits(row); };
  const auto text = [&](int row) { return "P&L " + digits(row); };
  Bytes rows;
  for (int row = 1; row <= kRows; ++row) {
    rows += "<row><c s='0'><v>" + number_text(row) + "</v></c><c t='inlineStr'><is><t>P&amp;L " +
            digits(row) + "</t></is></c><c t='s'><v>1</v></c></row>";
  }
  OpenedWorkbook opened(XlsxBytes{rows}.Build());
  const SheetCells& cells = opened.Cells();
  ASSERT_EQ(cells.Count(), 3u * kRows);
  for (int row = 1; row <= kRows; ++row) {
    ASSERT_EQ(cells.Value(row, 1).number, std::strtod(number_text(row).c_str(), nullptr)) << row;
    ASSERT_EQ(cells.Value(row, 2).text, text(row));
    ASSERT_EQ(cells.Value(row, 3).text, "Delta OD");
  }
}

TEST(XlsxWorkbook, ListsItsSheetsByTheirRelationships) {
  Bytes strict = Workbook(
      "<sheets><sheet name='Chart' r:id='c'/><sheet name='data' r:id='s'/><sheet "
      "name='x' r:id='m'/><sheet name='lost' r:id='l'/></sheets>");
  for (const auto& [from, to] :
       {std::pair{"schemas.openxmlformats.org/sp", "purl.oclc.org/ooxml/sp"},
        {"schemas.openxmlformats.org/of", "purl.oclc.org/ooxml/of"},
        {"/2006/main", "/main"},
        {"/2006/rel", "/rel"}}) {
    strict.replace(strict.find(from), std::string(from).size(), to);
  }
  OpenedWorkbook workbook(Zip({
      {"_rels\\.rels", Relationships(Relationship("a", "officeDocument", "Book.xml"))},
      {"book.xml", strict},
      {"_rels/Book.xml.rels",
       Relationships(Relationship("c", "chartsheet", "c.xml") +
                     Relationship("m", "xlMacrosheet", "m.xml") +
                     Relationship("s", "worksheet", "x/..\\\\./Deep/s.xml"))},
      {"deep\\s.xml",
       "<worksheet xmlns='http://purl.oclc.org/ooxml/spreadsheetml/main'><sheetData>"
       "<row><c><v>7</v></c></row></sheetData></worksheet>"},
  }));
  std::string sheets;
  for (const SheetInfo& sheet : workbook.Sheets()) {
    sheets += sheet.name + std::to_string(static_cast<int>(sheet.kind)) + " ";
  }
  EXPECT_EQ(sheets, "Chart1 data0 x2 lost0 ");
  EXPECT_EQ(Listing(workbook.Cells(1)), "1,1 number 7");
  EXPECT_EQ(ErrorOf([&] { workbook.Cells(3); }).Description(),
            "is damaged: its sheet \"lost\" has no part");
}

TEST(XlsxWorkbook, RefusesWhatIsDamagedOrHostile) {
  const Bytes sound = XlsxBytes{"<row><c t='s'><v>0</v></c></row>"}.Build();
  const std::size_t entry = sound.find("PK\x01\x02");
  const auto with = [&](std::size_t offset, Bytes bytes) {
    return Bytes(sound).replace(offset, bytes.size(), bytes);
  };
  const auto with_part = [](std::size_t part, const std::string& content) {
    ZipParts parts = XlsxBytes{}.Parts();
    parts[part].second = content;
    return Zip(parts);
  };
  const auto main_part = [](const std::string& name) {
    return Zip({{"_rels/.rels", Relationships(Relationship("a", "officeDocument", name))}});
  };
  const auto sheet = [&](const std::string& content) { return with_part(5, content); };
  const auto repeated = [](int count, const std::string& text) {
    std::string all;
    while (count-- > 0) all += text;
    return all;
  };
  const std::string deep = repeated(300, "<a>");
  const std::string kUnusual =
      "is damaged: its part xl/worksheets/sheet1.xml has names or texts of unusual length";
  const std::string name(1000, 'n');
  const auto one_text_everywhere = [&](int length) {
    ZipParts parts = XlsxBytes{repeated(1000, "<row><c t='s'><v>0</v></c></row>")}.Parts();
    parts[4].second = "<sst " + kMain + "><si><t>" + std::string(length, 'x') + "</t></si></sst>";
    return Zip(parts);
  };
  EXPECT_EQ(RefusalOf(one_text_everywhere(100'000)), "");
  ZipParts two_sheets = XlsxBytes{}.Parts();
  two_sheets.push_back(two_sheets[5]);
  const struct {
    Bytes file;
    std::string cause;
  } cases[] = {
      {sound.substr(0, 1200),
       "ends after 1,200 bytes, before the end of its zip archive: the rest of the file is "
       "missing"},
      {with(entry + 8, U16(1)), "needs a password: the parts of its zip archive are encrypted"},
      {with(entry + 10, U16(14)),
       "is damaged: its part _rels/.rels is packed by method 14, which workbooks do not use"},
      {with(entry + 16, U32(1)),
       "is damaged: its part _rels/.rels does not have the check sum that it should have"},
      {with(entry + 42, U32(1)),
       "is damaged: its part _rels/.rels does not lie where the directory "
       "of its zip archive says"},
      {with(entry + 28, U16(999)),
       "is damaged: the directory of its zip archive breaks off at byte " + GroupedDigits(entry)},
      {with(41, "\xFF\xFF\xFF\xFF"),
       "is damaged: its part _rels/.rels cannot be unpacked behind byte 0"},
      {sheet("<worksheet><a>"),
       "is damaged: its part xl/worksheets/sheet1.xml ends after 14 bytes, "
       "in the middle of its XML"},
      {sheet("<worksheet></a>"),
       "is damaged: its part xl/worksheets/sheet1.xml is not sound XML in "
       "line 1 (mismatched tag)"},
      {sheet("<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>"),
       "is damaged: its part xl/worksheets/sheet1.xml has a document type declaration, which "
       "workbooks do not have"},
      {sheet(deep),
       "is damaged: the elements of its part xl/worksheets/sheet1.xml lie more than 256 "
       "deep in each other"},
      {sheet("<dialogsheet " + kMain + "/>"),
       "is damaged: its part xl/worksheets/sheet1.xml does not hold a worksheet"},
      {with_part(3, "<styles/>"), "is damaged: its part xl/styles.xml does not hold styles"},
      {XlsxBytes{"<row r='2'><c><v>1</v></c></row><row r='1'><c><v>2</v></c></row><row r='2'>"
                 "<c s='1'/></row>"}
           .Build(),
       "is damaged: it has more than one value for cell A2"},
      {sheet("<a xmlns:b='" + repeated(2, name) + "'/>"), kUnusual},
      {sheet("<a xmlns:b='" + name + "'>" + repeated(40'000, "<c b:d='' b:e=''/>")), kUnusual},
      {XlsxBytes{"<row><c t='str'><v>" + repeated(5, repeated(1000, name) + "<x/>")}.Build(),
       kUnusual},
      {with_part(2, Relationships(Relationship("s", "worksheet", repeated(2, name)))),
       "is damaged: its sheet \"data\" has no part"},
      {XlsxBytes{"<row><c t='s'><v>7</v></c></row>"}.Build(),
       "is damaged: cell A1 shows text number 8 of the workbook's texts, of which 3 can be read"},
      {XlsxBytes{"<row><c r='XFE1'><v>1</v></c></row>"}.Build(),
       "is damaged: it has a value in cell XFE1, outside of every worksheet"},
      {main_part("xl/workbook.bin"),
       "is an .xlsb workbook, which cannot be read: save it as .xlsx"},
      {main_part("word/document2.xml"), "is not a workbook: it is a Word document"},
      {Zip({{"plates/P1-1-1.xls", "x"}}), "is not a workbook: it is a zip archive"},
      {Zip({}), "is not a workbook: it is a zip archive"},
  };
  for (const auto& test : cases) EXPECT_EQ(RefusalOf(test.file), test.cause);
  EXPECT_THAT(RefusalOf(one_text_everywhere(1'000'000)),
              MatchesRegex("shows more than 537,.* bytes of text in one sheet"));
  EXPECT_THAT(RefusalOf(Zip(two_sheets)),
              MatchesRegex("is damaged: its zip archive has 2 parts named "
                           "xl/worksheets/sheet1.xml, at bytes .*, .*"));
}

// Sheets can share a part; each reading of it costs time and counts.
TEST(ZipPartReader, StopsWhenTheBudgetIsSpent) {
  const Bytes file = Zip({{"a.xml", Bytes(1000, ' ')}});
  const ZipArchive archive(std::as_bytes(std::span(file)));
  ReadBudget budget(100);
  budget.AddUnpacked((512u << 20) + 200 * 100 - 999);
  char room[4096];
  ZipPartReader part(archive, "a.xml", budget);
  EXPECT_EQ(ErrorOf([&] { part.Read(room); }).Description(),
            "unpacks to more than 536,890,912 bytes");

  std::atomic<bool> given_up = false;
  ReadBudget shared(file.size(), &given_up);
  ZipPartReader wanted(archive, "a.xml", shared);
  EXPECT_EQ(wanted.Read(std::span(room).first(10)), 10u);
  given_up = true;
  EXPECT_THAT(ErrorOf([&] { wanted.Read(room); }).Description(), HasSubstr("not wanted any more"));
}

}  // namespace
}  // namespace korvex::test
