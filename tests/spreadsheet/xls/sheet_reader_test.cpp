#include "spreadsheet/xls/sheet_reader.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <utility>

#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

constexpr unsigned kBiff5 = 0x0500;

Bytes BoolErrCell(unsigned column, unsigned value, unsigned is_error) {
  return Record(0x0205, CellHead(0, column) + U8(value) + U8(is_error));
}

// A formula with a result of 8 bytes.
Bytes FormulaCell(unsigned row, unsigned column, const Bytes& result, unsigned flags = 0,
                  const Bytes& tokens = {}) {
  return Record(0x0006, CellHead(row, column) + result + U16(flags) + U32(0) +
                            U16(static_cast<unsigned>(tokens.size())) + tokens);
}

Bytes SpecialResult(unsigned type, unsigned value = 0) {
  return U8(type) + U8(0) + U8(value) + Bytes(3, '\0') + U16(0xFFFF);
}

Bytes RkCell(unsigned column, std::uint32_t rk) {
  return Record(0x027E, CellHead(0, column) + U32(rk));
}

TEST(SheetReader, ReadsEveryKindOfCell) {
  const Bytes strings = StringTable({NarrowText("zero"), NarrowText("one")});
  const struct {
    const char* condition;
    Bytes records;
    const char* cells;
  } cases[] = {
      {"NUMBER, with surplus bytes", Record(0x0203, CellHead(2, 255) + F64(-0.25) + "surplus"),
       "3,256 number -0.25"},
      {"RK: double, integer, and both by 100",
       RkCell(0, 0x3FF80000) + RkCell(1, 0x3FF80001) + RkCell(2, (7 << 2) | 2) +
           RkCell(3, static_cast<std::uint32_t>(-123 * 4) | 3),
       "1,1 number 1.5 | 1,2 number 0.015 | 1,3 number 7 | 1,4 number -1.23"},
      {"MULRK, with surplus bytes",
       Record(0x00BD, U16(1) + U16(2) + U16(0) + U32(6) + U16(0) + U32(10) + U16(3) + U16(0)),
       "2,3 number 1 | 2,4 number 2"},
      {"LABELSST", Record(0x00FD, CellHead(0, 0) + U32(1)), "1,1 text one"},
      {"LABEL", Record(0x0204, CellHead(0, 0) + WideText(u"\u03B1")), "1,1 text α"},
      {"LABEL, empty and without a flag byte", Record(0x0204, CellHead(0, 0) + U16(0)),
       "1,1 text "},
      {"BOOLERR, one of them a byte too long",
       BoolErrCell(0, 1, 0) + BoolErrCell(1, 42, 1) + BoolErrCell(2, 99, 1) +
           Record(0x0205, CellHead(0, 3) + U8(0) + U8(0) + U8(0)),
       "1,1 boolean True | 1,2 error Error 2042 | 1,3 error Error 2015 | 1,4 boolean False"},
      {"blanks", Record(0x0201, CellHead(5, 1)) + Record(0x00BE, U16(7) + U16(0) + U32(0) + U16(1)),
       ""},
      {"infinite number", NumberCell(0, 0, std::numeric_limits<double>::infinity()),
       "1,1 error Error 2036"},
      {"blanks in columns that no sheet has",
       Record(0x0201, CellHead(0, 256)) + Record(0x00BE, U16(7) + U16(255) + U32(0) + U16(256)),
       ""},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ListingOfRecords(test.records, strings), test.cells) << test.condition;
  }
}

// A habit of some writers is no damage, however often it shows.
TEST(SheetReader, ReadsAnyNumberOfCellsWithZerosBetweenThem) {
  Bytes records;
  Bytes cells;
  for (unsigned row = 0; row < 30; ++row) {
    records += NumberCell(row, 0, 1) + U32(0);
    cells += (row > 0 ? " | " : "") + std::to_string(row + 1) + ",1 number 1";
  }
  EXPECT_EQ(ListingOfRecords(records), cells);
}

TEST(SheetReader, TakesTheResultsOfFormulas) {
  const Bytes text_follows = FormulaCell(0, 0, SpecialResult(0));
  const Bytes string = Record(0x0207, NarrowText("result"));
  const struct {
    const char* condition;
    Bytes records;
    const char* cells;
  } cases[] = {
      {"number, Boolean, error, nothing",
       FormulaCell(0, 0, F64(0.5)) + FormulaCell(0, 1, SpecialResult(1, 1)) +
           FormulaCell(0, 2, SpecialResult(2, 7)) + FormulaCell(0, 3, SpecialResult(3)),
       "1,1 number 0.5 | 1,2 boolean True | 1,3 error Error 2007 | 1,4 text "},
      {"text", text_follows + string, "1,1 text result"},
      {"text behind a shared formula, an array and a table",
       text_follows + Record(0x04BC, Bytes(8, 'f')) + Record(0x0221, Bytes(12, 'f')) +
           Record(0x0236, Bytes(16, 'f')) + string,
       "1,1 text result"},
      {"text in two records",
       text_follows + Record(0x0207, U16(4) + U8(0) + "ab") + Record(0x003C, U8(0) + "cd"),
       "1,1 text abcd"},
      {"text that never comes", text_follows + NumberCell(0, 1, 1) + string,
       "1,1 uncalculated | 1,2 number 1"},
      {"text without a formula", NumberCell(0, 0, 1) + string, "1,1 number 1"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ListingOfRecords(test.records), test.cells) << test.condition;
  }
}

TEST(SheetReader, DecodesTextsOfOldWorkbooksByTheirCodePage) {
  const std::tuple<unsigned, const char*, std::string> cases[] = {
      {0, "\xB5M \x80", "µM €"},  // no CODEPAGE record
      {32769, "\x80", "€"},
      {32768, "\xB5M \xC6OD", "µM ∆OD"},
      {1250, "\x9C", "ś"},
      {1251, "\xE4", "д"},
      {1253, "\xE1", "α"},
      {1252, "a\x81z", "a\uFFFDz"},
      {1200, "\xB1\x03\xB2\x03", "αβ"},
      {1200, "ab", "ab"},
      {932, "a\x83\x41\xB1", "aアｱ"},
      {936, "\xC6\xBD\xB0\xE5", "平板"},
      {949, "\xB0\xA1", "가"},
      {950, "\xA4\xA4", "中"},
      {10007, "\x80", "А"},
      {932, "\x83", "\uFFFD"},                       // half a pair
      {932, "\xFC\xFEz\x83\x41", "\uFFFDzア"},       // a pair that is not assigned
      {932, "\x83\x20\x83\x41", "\uFFFD ア"},        // ASCII in the place of a second byte
      {1253, "\xE1\xAA\xD2\xE1", "α\uFFFD\uFFFDα"},  // each byte of a single-byte page
      {1255, "a\xE9", "aי"},                         // held back for a point that may follow
      {9999, "a\xE4\x62", "a\uFFFD\x62"},            // nobody's
  };
  for (const auto& [code_page, bytes, text] : cases) {
    const Bytes label = Record(0x0204, CellHead(0, 0) + ByteText(bytes));
    const Bytes rich = Record(0x00D6, CellHead(0, 1) + ByteText(bytes) + U8(1) + U8(0) + U8(1));
    const Bytes formula = FormulaCell(0, 2, SpecialResult(0)) + Record(0x0207, ByteText(bytes));
    const Bytes globals = code_page == 0 ? Bytes() : Record(0x0042, U16(code_page));
    EXPECT_EQ(ListingOfRecords(label + rich + formula, globals, kBiff5),
              "1,1 text " + text + " | 1,2 text " + text + " | 1,3 text " + text);
  }
}

TEST(SheetReader, JoinsACharacterThatAContinueRecordCuts) {
  const Bytes cut = FormulaCell(0, 0, SpecialResult(0)) + Record(0x0207, U16(4) + Bytes("ab\x83")) +
                    Record(0x003C, Bytes("\x41"));
  EXPECT_EQ(ListingOfRecords(cut, Record(0x0042, U16(932)), kBiff5), "1,1 text abア");
}

TEST(SheetReader, KeepsTheLaterOfTwoCellsAtOnePlace) {
  const Bytes records = NumberCell(4, 1, 1) + NumberCell(0, 3, 2) + NumberCell(4, 1, 3) +
                        NumberCell(0, 2, 4) + NumberCell(2, 0, 5) + Record(0x0201, CellHead(2, 0)) +
                        Record(0x0201, CellHead(9, 0)) + NumberCell(9, 0, 6);
  EXPECT_EQ(ListingOfRecords(records),
            "1,3 number 4 | 1,4 number 2 | 5,2 number 3 | 10,1 number 6");
}

TEST(SheetReader, PassesOverEmbeddedCharts) {
  const Bytes chart = Record(0x0809, U16(0x0600) + U16(0x20)) + NumberCell(0, 0, 9) +
                      Record(0x0809, U16(0x0600) + U16(0x20)) + NumberCell(0, 1, 9) +
                      Record(0x000A) + NumberCell(0, 2, 9) + Record(0x000A);
  EXPECT_EQ(ListingOfRecords(NumberCell(0, 0, 1) + chart + NumberCell(0, 3, 2)),
            "1,1 number 1 | 1,4 number 2");
}

// Bytes after the end of the sheet do not matter.
TEST(SheetReader, RefusesSheetsWithoutAnEnd) {
  const Bytes whole = OneSheet(NumberCell(0, 0, 1));
  const Bytes without_end = whole.substr(0, whole.size() - 4);
  const Bytes at = " at byte 62 of the workbook stream ";
  const Bytes sheet = "is damaged: in sheet \"data\" the record";
  const std::pair<Bytes, Bytes> cases[] = {
      {without_end,
       "is damaged: in sheet \"data\" the records end at byte 62 of the workbook "
       "stream without the one that closes the sheet (EOF)"},
      {without_end + Bytes(1001, '\0'),
       sheet + " at byte 94 of the workbook stream is one of many that are nothing but zeros"},
      {without_end + Bytes(50, '\xEE'), sheet + at + "reaches beyond the end of the stream"},
      {without_end + NumberCell(0, 1, 2).substr(0, 12),
       sheet + at + "reaches beyond the end of the stream"},
      {whole + NumberCell(0, 1, 2), ""},
      {whole + Bytes(50, '\xEE'), ""},
  };
  for (const auto& [stream, cause] : cases) EXPECT_EQ(RefusalOf(stream), cause);
}

// Each case is a sound sheet with one damaged byte in a record's header.
TEST(SheetReader, RefusesRecordsAmongWhichCellsAreLost) {
  const Bytes one = NumberCell(0, 0, 1);
  const Bytes three = NumberCell(0, 2, 3);
  const Bytes number = CellHead(0, 1) + F64(2);
  const struct {
    const char* condition;
    Bytes records;
    const char* cause;
  } cases[] = {
      {"kind of a cell that nobody knows", one + Record(0x0283, number) + three,
       "stands between cells, where none of its kind does"},
      {"kind of a cell that does not stand there", one + Record(0x0207, number) + three,
       "stands between cells, where none of its kind does"},
      {"blank with a value", one + Record(0x0201, number) + three,
       "has 14 bytes of data, more than its kind can"},
      {"cell too short", one + Record(0x0203, number.substr(0, 13)) + three,
       "is too short for its kind"},
      {"cell too long", one + Record(0x0203, number + Bytes(9, '\0')) + three,
       "has 23 bytes of data, more than its kind can"},
      {"length that leads into the next cell",
       one + U16(0x0203) + U16(18) + number + three + NumberCell(0, 3, 4),
       "has 18 bytes of data, and no record of a worksheet stands behind them"},
      {"column information that swallows cells", Record(0x007D, Bytes(12, '\0') + one + three),
       "has 48 bytes of data, more than its kind can"},
      {"unknown kind that swallows cells", Record(0x0A7D, Bytes(600, '\0')) + one,
       "is of no kind that sheets hold"},
      {"end of the sheet that is none", one + Record(0x000A, number) + three,
       "would end the sheet, but holds data"},
      {"fewer cells than columns",
       Record(0x00BD, U16(1) + U16(2) + U16(0) + U32(6) + U16(4)) + three,
       "holds the cells of other columns than it says"},
      {"text cut", Record(0x0204, CellHead(0, 0) + U16(4) + U8(0) + "ab") + three,
       "ends before its text does"},
      {"formula cut", Record(0x0006, CellHead(0, 0) + F64(1) + Bytes(6, '\0') + U16(9)) + three,
       "is too short for its formula"},
  };
  for (const auto& test : cases) {
    const Bytes cause = RefusalOf(OneSheet(test.records));
    EXPECT_TRUE(cause.starts_with("is damaged: in sheet \"data\" the record at byte ") &&
                cause.ends_with(test.cause))
        << test.condition << ": " << cause;
  }
}

// Links and notes begin with a row and a column, as cells do.
TEST(SheetReader, ReadsCellsWithOtherRecordsBetweenThem) {
  const Bytes link = Record(0x01B8, U16(1) + U16(1) + U16(1) + U16(1) + Bytes(40, 'l'));
  const Bytes note = Record(0x001C, U16(1) + U16(1) + U16(0) + U16(1) + Bytes(4, '\0'));
  const Bytes columns = Record(0x007D, U16(1) + U16(1) + Bytes(8, '\0'));
  EXPECT_EQ(ListingOfRecords(NumberCell(1, 0, 1) + link + note + columns + NumberCell(1, 1, 2)),
            "2,1 number 1 | 2,2 number 2");
}

TEST(SheetReader, RefusesFormatsAndSheetsThatDoNotExist) {
  const Bytes formats = Record(0x00E0, Bytes(20, '\0')) + Record(0x00E0, Bytes(20, '\0'));
  EXPECT_EQ(ListingOfRecords(NumberCell(0, 0, 7, 1), formats), "1,1 number 7");
  EXPECT_NE(RefusalOf(OneSheet(NumberCell(0, 0, 7, 2), formats))
                .find("has the format number 2, and there are 2 formats from 0 on"),
            Bytes::npos);
  Bytes stream = OneSheet(NumberCell(0, 0, 7));
  const std::size_t offset = stream.find(Record(0x0085).substr(0, 2)) + 4;
  stream[offset] = static_cast<char>(stream[offset] + 20);
  EXPECT_NE(RefusalOf(stream).find("where no sheet does"), Bytes::npos);
  PutU32(stream, offset, 70'000);
  EXPECT_EQ(
      RefusalOf(stream),
      "is damaged: sheet \"data\" should begin at byte 70,000 of a workbook stream of 66 bytes");
}

// A writer that does not calculate stores zeros or empty texts as results. So does a template whose
// cells are still empty, but there they are right. A1 is the zero-based reference (0, 0).
TEST(SheetReader, TellsFormulasThatNobodyCalculated) {
  constexpr unsigned kOnLoad = 2;
  const Bytes zero = F64(0);
  const Bytes empty = SpecialResult(3);
  const Bytes a1 = U8(0x44) + U16(0) + U16(0xC000);
  const Bytes a1_doubled = a1 + U8(0x1E) + U16(2) + U8(0x05);
  const Bytes sum_of_a =
      U8(0x25) + U16(0) + U16(8) + U16(0xC000) + U16(0xC000) + U8(0x19) + U8(16) + U16(0);
  // =IF(A1="","",1)
  const Bytes blank_if_blank = a1 + U8(0x17) + U16(0) + U8(0x0B) + U8(0x19) + U8(2) + U16(9) +
                               U8(0x17) + U16(0) + U8(0x19) + U8(8) + U16(10) + U8(0x1E) + U16(1) +
                               U8(0x22) + U8(3) + U16(1);
  const Bytes unknown = a1 + U8(0x41) + U16(999);
  const struct {
    const char* condition;
    Bytes result;
    unsigned flags;
    Bytes tokens;
    bool is_told_of_number;  // beside a number in A1
    bool is_told_of_blank;   // where A1 is empty
  } cases[] = {
      {"product", zero, kOnLoad, a1_doubled, true, false},
      {"sum", zero, kOnLoad, sum_of_a, true, false},
      {"formula that is not worked out", zero, kOnLoad, unknown, true, false},
      {"difference of nearly equal numbers", zero, kOnLoad,
       a1 + U8(0x1F) + F64(3.0000000000000004) + U8(0x04), false, true},
      {"formula that changes by itself", zero, kOnLoad, U8(0x19) + U8(1) + U16(0) + a1_doubled,
       false, false},
      {"constant", zero, kOnLoad, U8(0x1E) + U16(7), true, true},
      {"empty text of a product", empty, kOnLoad, a1_doubled, true, true},
      {"zero that nobody asks to calculate", zero, 0, a1_doubled, false, false},
      {"empty text that nobody asks to calculate", empty, 0, a1_doubled, true, true},
      {"true empty text", empty, 0, blank_if_blank, true, false},
      {"text formula that is not worked out", empty, 0, unknown, false, false},
  };
  for (const auto& test : cases) {
    const Bytes formula = FormulaCell(0, 1, test.result, test.flags, test.tokens);
    const auto is_told = [&](const Bytes& records) {
      return ListingOfRecords(records).find("1,2 uncalculated") != Bytes::npos;
    };
    EXPECT_EQ(is_told(NumberCell(0, 0, 3) + formula), test.is_told_of_number) << test.condition;
    EXPECT_EQ(is_told(formula), test.is_told_of_blank) << test.condition;
    // One result shows that somebody did calculate.
    const Bytes calculated = FormulaCell(0, 2, F64(6), test.flags, a1_doubled);
    EXPECT_FALSE(is_told(NumberCell(0, 0, 3) + formula + calculated)) << test.condition;
  }
}

TEST(SheetReader, RefusesValuesThatItCannotPlaceOrFind) {
  const Bytes strings = StringTable({NarrowText("only one")});
  const Bytes outside = "is damaged: it has a value in cell IW2, outside of every worksheet";
  const struct {
    Bytes cell;
    Bytes cause;
  } cases[] = {
      {Record(0x00FD, CellHead(6, 27) + U32(1)),
       "is damaged: cell AB7 shows text number 2 of the workbook's texts, of which 1 can be read"},
      {NumberCell(1, 256, 1), outside},
      {Record(0x00BD, U16(1) + U16(255) + U16(0) + U32(6) + U16(0) + U32(10) + U16(256)), outside},
  };
  for (const auto& [cell, cause] : cases) EXPECT_EQ(RefusalOf(OneSheet(cell, strings)), cause);
}

// Any number of sheets may begin at the same byte.
TEST(SheetReader, RefusesSheetsThatShareTheirBytes) {
  Bytes records;
  for (int i = 0; i < 500; ++i) records += Record(0x00EC, Bytes(8000, '\0'));
  OpenedWorkbook workbook(OneSheet(records));
  const auto read = [&] {
    for (int i = 0; i < 20; ++i) workbook.Cells();
  };
  EXPECT_EQ(ErrorOf(read).Description(), "is damaged: its sheets lie over each other");
}

TEST(SheetCells, LastCellCountsFormattedBlanks) {
  const Bytes records = NumberCell(1, 1, 1) + Record(0x00BE, U16(1) + U16(2) + U32(0) + U16(3)) +
                        Record(0x0201, CellHead(65535, 0));
  OpenedWorkbook workbook(OneSheet(records));
  EXPECT_EQ(workbook.Cells().LastCell(), (CellAddress{65536, 4}));
  EXPECT_EQ(workbook.Cells().CountA(2), 1);
  EXPECT_EQ(workbook.Cells().CountA(65536), 0);
  OpenedWorkbook empty(OneSheet({}));
  EXPECT_EQ(empty.Cells().LastCell(), (CellAddress{1, 1}));
}

TEST(SheetCells, FillingTheSamePlacesAgainTakesNoMemory) {
  SheetCells cells;
  cells.Clear();
  cells.AddNumber(300, 0, CellKind::kNumber, 1);
  for (int round = 0; round < 2000; ++round) {
    cells.AddNumber(1, 255, CellKind::kNumber, round);
    cells.AddBlanks(0, 0, 256);
  }
  cells.Finish(ReadBudget(0));
  EXPECT_EQ(Listing(cells), "2,256 number 1999 | 301,1 number 1");
  EXPECT_LT(cells.MemorySize(), 8u << 20);
}

TEST(SheetCells, ATextEqualToTheOneAboveTakesNoMemory) {
  const std::string remark(400, 'r');
  SheetCells cells;
  cells.Clear();
  const auto add = [&](std::uint32_t row, std::uint16_t column, const std::string& text) {
    cells.AddOwnText(row, column, cells.OwnTexts().Append(text));
  };
  for (std::uint32_t row = 0; row < 50'000; ++row) {
    add(row, 0, row % 2 == 0 ? "a" : "");
    add(row, 7, row == 3 ? "other" : remark);
  }
  cells.AddOwnText(50'000, 7, {});
  cells.ReplaceLastText(cells.OwnTexts().Append(remark));
  EXPECT_LT(cells.OwnTexts().Size(), 60'000u);
  cells.Finish(ReadBudget(0));
  EXPECT_EQ(cells.Value(3, 8).text, remark);
  EXPECT_EQ(cells.Value(4, 8).text, "other");
  EXPECT_EQ(cells.Value(4, 1).text, "");
  EXPECT_EQ(cells.Value(49'999, 1).text, "a");
  EXPECT_EQ(cells.Value(50'001, 8).text, remark);
}

}  // namespace
}  // namespace korvex::test
