#include "spreadsheet/file_kind.h"

#include <gtest/gtest.h>

#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

Bytes Utf16(std::string_view text) {
  Bytes bytes = "\xFF\xFE";
  for (const char letter : text) bytes += U16(static_cast<unsigned char>(letter));
  return bytes;
}

TEST(FileKind, IsDecidedByTheContent) {
  const struct {
    Bytes file;
    const char* refusal;
  } cases[] = {
      {"", "is empty (0 bytes)"},
      {Bytes(2048, '\0'), "is not a workbook: it is nothing but zero bytes"},
      {Bytes(300'000, '\0') + "x",
       "is not a workbook: it is a file that begins with nothing but zero bytes"},
      {"plate\twell\tOD\n1\tA1\t0.5\n", "is not a workbook: it is tab-delimited text"},
      {Utf16("plate\twell\n").substr(2), "is not a workbook: it is tab-delimited text"},
      {Bytes("\xFE\xFF\x03\xB1\0,\0\n", 8), "is not a workbook: it is comma-delimited text"},
      {Utf16("plate\twell\n"), "is not a workbook: it is tab-delimited text"},
      {"\xEF\xBB\xBFplate;OD\n1;0,5\n", "is not a workbook: it is semicolon-delimited text"},
      {"plate 7\n1,25;0,5\n", "is not a workbook: it is semicolon-delimited text"},
      {"plate,OD\n1,0.5;\n", "is not a workbook: it is comma-delimited text"},
      {"Tuesday, 3 December\n\nA;0,1\nB;0,2\n",
       "is not a workbook: it is semicolon-delimited text"},
      {"<>\t1\t2\n", "is not a workbook: it is tab-delimited text"},
      {"ID;Plate\n1;1041\n", "is not a workbook: it is semicolon-delimited text"},
      {"[{\"plate\": 1, \"OD\": 0.5}]", "is not a workbook: it is a JSON file"},
      {"From: <a>, b\r\nMIME-Version: 1.0\r\n", "is not a workbook: it is a web archive (MHTML)"},
      {"\n\t<TABLE><tr><td>1</td></tr></TABLE>", "is not a workbook: it is a web page (HTML)"},
      {"<?xml version=\"1.0\"?>\n<Workbook "
       "xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\">",
       "ends after 85 bytes, in the middle of its XML"},
      {"\xEF\xBB\xBF \n<!-- table --><html "
       "xmlns:x=\"urn:schemas-microsoft-com:office:spreadsheet\">",
       "is not a workbook: it is a web page (HTML)"},
      {"<?xml version=\"1.0\"?><!DOCTYPE plates><plates><table/></plates>",
       "is not a workbook: it is an XML file"},
      {"ID;PWXL;N;E\nC;Y1;X1;K1\nE\n", "is not a workbook: it is a SYLK file"},
      {Record(0x0409, U16(0) + U16(0x10) + U16(0)),
       "is not a workbook: it is a spreadsheet in a format older than that of Excel 5"},
      {"\x05"
       "Anna " +
           Bytes(159, ' '),
       "is not a workbook: it is the mark of a workbook that somebody has open"},
      {",ann,pc7,21.11.2026 17:00,file:///home/ann;",
       "is not a workbook: it is the mark of a workbook that somebody has open"},
      {CompoundBytes{.stream = "x", .stream_name = "EncryptedPackage"}.Build(),
       "needs a password: it is an encrypted .xlsx workbook"},
      {CompoundBytes{.stream = "x", .stream_name = "WordDocument"}.Build(),
       "is not a workbook: it is a Word document"},
      {CompoundBytes{.stream = Record(0x0409, Bytes(6, '\0'))}.Build(),
       "is not a workbook: it is a spreadsheet in a format older than that of Excel 5"},
      {CompoundBytes{.stream = NumberCell(0, 0, 1)}.Build(),
       "is damaged: its workbook stream does not begin with a BOF record"},
      {CompoundBytes{}.Build(), "is damaged: its workbook stream is empty"},
      {"1,A1,0.5" + Bytes(157, '\n'), "is not a workbook: it is comma-delimited text"},
      {"\xD0\xCF\x11", "ends after 3 bytes, within its header"},
      {"<?xml version=\"1.0\"?><office:document xmlns:office=\"",
       "ends after 52 bytes, in the middle of its XML"},
      {"\x01\x02\x03", "is not a workbook: it is a file of an unknown kind"},
  };
  for (const auto& test : cases) EXPECT_EQ(RefusalOf(test.file), test.refusal);
}

}  // namespace
}  // namespace korvex::test
