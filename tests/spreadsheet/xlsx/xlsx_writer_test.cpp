#include "spreadsheet/xlsx/xlsx_writer.h"

#include <gmock/gmock.h>

#include <span>

#include "spreadsheet/bytes/zip_archive.h"
#include "spreadsheet/bytes/zip_writer.h"
#include "spreadsheet/cells/text_pool.h"
#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

using testing::HasSubstr;
using testing::Not;

template <class Write>
Bytes Saved(Write write) {
  MemoryFileSystem files(PathStyle::kLinux);
  files.AddFolder("/plates");
  const auto file = files.Replace("/plates/a");
  write(*file);
  file->Commit();
  return files.Content("/plates/a");
}

std::string PartOf(const Bytes& archive, const std::string& name) {
  const ZipArchive zip(std::as_bytes(std::span(archive)));
  ReadBudget budget(archive.size());
  ZipPartReader reader(zip, name, budget);
  std::string text;
  char room[4096];
  while (const std::size_t count = reader.Read(room)) text.append(room, count);
  return text;
}

TEST(ZipWriter, WritesPartsOfKnownAndUnknownSizeAndOfZip64) {
  const std::string text(300'000, 'x');
  const Bytes archive = Saved([&](ReplacementFile& file) {
    ZipWriter zip(file);
    zip.AddPart("all at once", text);
    zip.BeginPart("in pieces", 2 * text.size());
    zip.Write(text);
    zip.Write({});
    zip.Write(text);
    zip.EndPart();
    zip.BeginPart("large", std::uint64_t{1} << 32);
    zip.Write("small");
    zip.EndPart();
    zip.AddPart("empty", "");
    zip.Finish();
  });
  EXPECT_EQ(PartOf(archive, "all at once"), text);
  EXPECT_EQ(PartOf(archive, "in pieces"), text + text);
  EXPECT_EQ(PartOf(archive, "large"), "small");
  EXPECT_EQ(PartOf(archive, "empty"), "");
  // In front of the part its sizes are to be found in the field of Zip64.
  EXPECT_THAT(archive, HasSubstr(U32(0xFFFFFFFF) + U32(0xFFFFFFFF) + U16(5) + U16(20) + "large" +
                                 U16(1) + U16(16)));
}

TEST(XlsxWriter, KeepsTheHeaderRowInViewWithAFilterAndGivesColumnsRoom) {
  TextPool texts;
  CellStore cells;
  const auto put = [&](int row, int column, const std::string& text) {
    cells.Put(row, column, {CellKind::kText, texts.Intern(text)});
  };
  const auto put_number = [&](int row, int column, CellKind kind, double number) {
    cells.Put(row, column, {kind, std::bit_cast<std::uint64_t>(number)});
  };
  for (const char* header : {"well", "compound ID", "x", "Date", "#", "y"}) {
    put(0, cells.ColumnCount(), header);
  }
  put(1, 0, "A01");
  put(1, 1, "KIN-1");
  put(1, 2, std::string(1000, 'x'));
  put_number(1, 3, CellKind::kDate, 37593.5);
  put_number(2, 4, CellKind::kNumber, 4300000001);
  put(2, 5, "\u65E5\u65E5\u65E5\u65E5\u65E5\u65E5");
  const CellStore empty;
  const Bytes book = Saved([&](ReplacementFile& file) {
    WriteXlsx(texts, {{"R&D 'a'", &cells, false}, {"none", &empty, true}}, file);
  });
  const std::string sheet = PartOf(book, "xl/worksheets/sheet1.xml");
  EXPECT_THAT(sheet, HasSubstr("<dimension ref=\"A1:F3\"/>"));
  EXPECT_THAT(sheet, HasSubstr("<pane ySplit=\"1\" topLeftCell=\"A2\" activePane=\"bottomLeft\" "
                               "state=\"frozen\"/>"));
  EXPECT_THAT(sheet, HasSubstr("</sheetData><autoFilter ref=\"A1:F3\"/>"));
  std::string widths;
  for (std::size_t at = 0; (at = sheet.find(" width=\"", at)) != std::string::npos; ++at) {
    widths += sheet.substr(at + 8, sheet.find('"', at + 8) - at - 8) + " ";
  }
  EXPECT_EQ(widths, "15 50 17 13 13 ") << "of compound ID, x, Date, # and y";
  EXPECT_THAT(PartOf(book, "xl/workbook.xml"),
              HasSubstr("localSheetId=\"0\" hidden=\"1\">'R&amp;D ''a'''!$A$1:$F$3</definedName>"));
  const std::string other = PartOf(book, "xl/worksheets/sheet2.xml");
  EXPECT_THAT(other, HasSubstr("tabSelected"));
  EXPECT_THAT(other, Not(HasSubstr("pane")));
  EXPECT_THAT(other, Not(HasSubstr("autoFilter")));
}

}  // namespace
}  // namespace korvex::test
