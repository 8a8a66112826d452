#include "spreadsheet/embedded_application.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

using ::testing::HasSubstr;

TEST(EmbeddedApplication, DropsAWorkbookThatCloses) {
  MemoryFileSystem files(PathStyle::kWindows);
  files.AddFolder("C:\\plates");
  EmbeddedApplication application(files);
  Workbook& first = application.AddWorkbook();
  Workbook& second = application.AddWorkbook();
  first.Worksheets(1).SetValue(1, 1, CellValue::Text("kept"));
  second.SaveAs("C:\\plates\\out.xls");
  application.OpenWorkbook("C:\\plates\\out.xls", {.read_only = true});
  EXPECT_EQ(application.WorkbookCount(), 3);

  second.Close();
  EXPECT_EQ(application.WorkbookCount(), 2);
  EXPECT_EQ(application.Workbooks(1).Worksheets(1).Value(1, 1).text, "kept");
  Workbook& opened = application.Workbooks(2);
  EXPECT_EQ(opened.Name(), "out.xls");
  EXPECT_EQ(opened.Path(), "C:\\plates");
  opened.Close();
  EXPECT_EQ(ErrorOf([&] { application.Workbooks(2); }).Number(), error_number::kSubscript);
}

TEST(EmbeddedApplication, NamesTheFileThatItCannotOpen) {
  MemoryFileSystem files(PathStyle::kLinux);
  EmbeddedApplication application(files);
  const Error error = ErrorOf([&] { application.OpenWorkbook("/missing.xls", {}); });
  EXPECT_EQ(error.Number(), error_number::kAutomation);
  EXPECT_THAT(error.Description(), HasSubstr("/missing.xls"));
  EXPECT_EQ(application.WorkbookCount(), 0);
}

TEST(EmbeddedApplication, RefusesWorkbooksOnceItHasQuit) {
  MemoryFileSystem files(PathStyle::kLinux);
  const auto application = EmbeddedSpreadsheet(files).CreateApplication();
  application->AddWorkbook();
  application->Quit();
  EXPECT_EQ(ErrorOf([&] { application->AddWorkbook(); }).Number(), error_number::kAutomation);
  EXPECT_EQ(ErrorOf([&] { application->OpenWorkbook("/a.xls", {}); }).Number(),
            error_number::kAutomation);
  EXPECT_EQ(ErrorOf([&] { application->Workbooks(1); }).Number(), error_number::kAutomation);
}

}  // namespace
}  // namespace korvex
