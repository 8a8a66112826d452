#include "spreadsheet/input_workbook.h"
#include "spreadsheet/open_workbook.h"

#include <gmock/gmock.h>

#include <functional>
#include <new>
#include <stdexcept>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/embedded_application.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/workbook_bytes.h"

namespace korvex::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr char kFile[] = "/plates/run1/P1-3-2.xls";

class InputWorkbookTest : public ::testing::Test {
 protected:
  InputWorkbookTest() {
    StreamBytes stream;
    stream.globals = StringTable({NarrowText("first")});
    stream.sheets = {{.name = "Chart1", .kind = 2},
                     {.name = "data", .records = Record(0x00FD, CellHead(0, 0) + U32(0))},
                     {.name = "Macro1", .kind = 1},
                     {.name = "More", .records = NumberCell(1, 1, 2), .state = 1}};
    files_.AddFile(kFile, CompoundBytes{.stream = stream.Build()}.Build());
  }

  std::unique_ptr<InputWorkbook> Open(const std::string& file = kFile) {
    return std::make_unique<InputWorkbook>(files_, file, pool_);
  }

  MemoryFileSystem files_{PathStyle::kLinux};
  ReadBufferPool pool_;
};

TEST_F(InputWorkbookTest, NamesItselfAndItsSheets) {
  const auto workbook = Open();
  EXPECT_EQ(workbook->Name(), "P1-3-2.xls");
  EXPECT_EQ(workbook->Path(), "/plates/run1");
  EXPECT_EQ(workbook->WorksheetCount(), 2);
  EXPECT_EQ(workbook->Worksheets(1).Name(), "data");
  EXPECT_EQ(workbook->Worksheets("DATA").Index(), 2);
  for (const Error& error : {ErrorOf([&] { workbook->Worksheets("missing"); }),
                             ErrorOf([&] { workbook->Worksheets("Chart1"); }),
                             ErrorOf([&] { workbook->Worksheets(3); })}) {
    EXPECT_EQ(error.Number(), error_number::kSubscript);
    EXPECT_THAT(error.Description(), StartsWith(std::string(kFile) + " has no worksheet "));
  }
}

TEST_F(InputWorkbookTest, AnswersWithinTheSheetAndRefusesTheRest) {
  const auto workbook = Open();
  Worksheet& sheet = workbook->Worksheets(1);
  EXPECT_EQ(sheet.Value(65536, 256), CellValue());
  EXPECT_EQ(sheet.Value(1, 387), CellValue());
  for (const CellAddress outside : {CellAddress{0, 1}, {1, 0}, {65537, 1}, {1, 388}}) {
    const Error error = ErrorOf([&] { sheet.Value(outside.row, outside.column); });
    EXPECT_EQ(error.Number(), error_number::kAutomation);
    EXPECT_THAT(error.Description(), HasSubstr(kFile));
  }
  for (const Error& error : {ErrorOf([&] { sheet.SetValue(1, 1, CellValue::Number(1)); }),
                             ErrorOf([&] { sheet.SetName("x"); }), ErrorOf([&] { sheet.Delete(); }),
                             ErrorOf([&] { sheet.DeleteColumn(1); }),
                             ErrorOf([&] { workbook->SaveAs("/plates/x.xls"); })}) {
    EXPECT_EQ(error.Number(), error_number::kAutomation);
    EXPECT_EQ(error.Description(), std::string(kFile) + " is opened for reading only");
  }
}

TEST_F(InputWorkbookTest, TextsStayWhileOtherSheetsAreRead) {
  const auto workbook = Open();
  const CellValue text = workbook->Worksheets("data").Value(1, 1);
  EXPECT_EQ(workbook->Worksheets("more").Value(2, 2), CellValue::Number(2));
  EXPECT_EQ(Open()->Worksheets("more").Value(2, 2), CellValue::Number(2));
  EXPECT_EQ(text, CellValue::Text("first"));
  EXPECT_EQ(workbook->Worksheets("data").Value(1, 1), text);
}

TEST_F(InputWorkbookTest, SaysWhatIsDamagedEachTimeItIsAsked) {
  const Bytes cell = Record(0x00FD, CellHead(0, 0) + U32(0));
  files_.AddFile("/plates/bad.xls", CompoundBytes{.stream = OneSheet(cell)}.Build());
  const auto workbook = Open("/plates/bad.xls");
  for (int attempt = 1; attempt <= 2; ++attempt) {
    EXPECT_THAT(ErrorOf([&] { workbook->Worksheets(1).Value(1, 1); }).Description(),
                StartsWith("/plates/bad.xls is damaged: cell A1 "));
  }
  EXPECT_EQ(ErrorOf([&] { Open("/plates/none.xls"); }).Number(), error_number::kFileNotFound);
}

TEST_F(InputWorkbookTest, RefusesOnlyTheUncalculatedFormulasThatAreAskedFor) {
  files_.AddFile("/plates/new.xlsx", DataFile("openpyxl-plate.xlsx"));
  const auto workbook = Open("/plates/new.xlsx");
  const Worksheet& data = workbook->Worksheets("data");
  EXPECT_EQ(data.Value(3, 1), CellValue::Number(1));
  EXPECT_EQ(ErrorOf([&] { data.Value(5, 2); }).Description(),
            "/plates/new.xlsx cannot be used: its formulas were never calculated: open and save it "
            "in a spreadsheet application (the first one asked for is in cell B5 of sheet "
            "\"data\")");
}

// Campaign folders hold files of any size besides workbooks.
TEST_F(InputWorkbookTest, ReadsOnlyTheBeginningOfWhatIsNoWorkbook) {
  const std::string table = "plate,OD\n" + std::string(1 << 20, '1');
  files_.AddFile("/plates/a.xls", table);
  std::vector<std::byte> content;
  EXPECT_EQ(ErrorOf([&] { ReadWorkbookFile(files_, "/plates/a.xls", content); }).Description(),
            "is not a workbook: it is comma-delimited text");
  EXPECT_LT(content.size(), table.size() / 2);
  ReadWorkbookFile(files_, kFile, content);
  EXPECT_EQ(content.size(), files_.Content(kFile).size());
  const std::string large = files_.Content(kFile) + std::string(1 << 20, '\0');
  files_.AddFile("/plates/b.xls", large);
  ReadWorkbookFile(files_, "/plates/b.xls", content);
  EXPECT_EQ(content.size(), large.size());
}

TEST(NamingFile, NamesTheFileThatNeedsMoreMemoryThanThereIs) {
  for (const auto& step : {std::function([] { throw std::bad_alloc(); }),
                           std::function([] { throw std::length_error("resize"); })}) {
    const Error error = ErrorOf([&] { NamingFile("/plates/a.xlsx", step); });
    EXPECT_EQ(error.Number(), error_number::kOutOfMemory);
    EXPECT_EQ(error.Description(), "/plates/a.xlsx needs more memory than there is");
  }
}

TEST(EmbeddedApplication, HasTheOpenWorkbooksUntilItQuits) {
  MemoryFileSystem files(PathStyle::kWindows);
  files.AddFolder("C:\\plates");
  EmbeddedApplication application(files);
  application.AddWorkbook("out.xls").Worksheets(1).SetValue(1, 1, CellValue::Text("kept"));
  Workbook& second = application.AddWorkbook("out.xls");
  second.SaveAs("C:\\plates\\out.xls");
  application.OpenWorkbook("C:\\plates\\out.xls", {.read_only = true});
  second.Close();
  EXPECT_EQ(application.WorkbookCount(), 2);
  EXPECT_EQ(application.Workbooks(1).Worksheets(1).Value(1, 1).text, "kept");
  EXPECT_EQ(application.Workbooks(2).Name(), "out.xls");
  EXPECT_EQ(application.Workbooks(2).Path(), "C:\\plates");
  application.Workbooks(2).Close();
  EXPECT_EQ(ErrorOf([&] { application.Workbooks(2); }).Number(), error_number::kSubscript);
  const Error missing = ErrorOf([&] { application.OpenWorkbook("C:\\missing.xls", {}); });
  EXPECT_EQ(missing.Number(), error_number::kAutomation);
  EXPECT_THAT(missing.Description(), HasSubstr("C:\\missing.xls"));
  EXPECT_EQ(application.WorkbookCount(), 1);
  application.Quit();
  for (const auto& call : {std::function([&] { application.AddWorkbook("out.xls"); }),
                           std::function([&] { application.Workbooks(1); })}) {
    EXPECT_EQ(ErrorOf(call).Number(), error_number::kAutomation);
  }
}

}  // namespace
}  // namespace korvex::test
