#include <gtest/gtest.h>
#include <pthread.h>

#include "spreadsheet/embedded_application.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

// Asks for more stack than there are addresses, so that no thread can be started.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&former_);
    pthread_attr_t impossible;
    pthread_attr_init(&impossible);
    pthread_attr_setstacksize(&impossible, std::size_t{1} << 50);
    pthread_setattr_default_np(&impossible);
    pthread_attr_destroy(&impossible);
  }
  ~NoThreads() {
    pthread_setattr_default_np(&former_);
    pthread_attr_destroy(&former_);
  }

 private:
  pthread_attr_t former_;
};

TEST(OutputWorkbook, IsTheSameFileWhereNoThreadCanBeStarted) {
  MemoryFileSystem files(PathStyle::kLinux);
  files.AddFolder("/plates");
  EmbeddedApplication application(files);
  Workbook& workbook = application.AddWorkbook("a.xlsx");
  for (int row = 1; row <= 20'000; ++row) {
    workbook.Worksheets(1).SetValue(row, 1, CellValue::Number(row / 7.0));
    workbook.Worksheets(2).SetValue(row, 2, CellValue::Text(std::to_string(row % 100) + " uM"));
  }
  workbook.SaveAs("/plates/a.xlsx");
  const NoThreads none;
  pthread_t thread;
  ASSERT_NE(pthread_create(
                &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr),
            0);
  workbook.SaveAs("/plates/b.xlsx");
  EXPECT_EQ(files.Content("/plates/a.xlsx"), files.Content("/plates/b.xlsx"));
  files.LimitSpace(70'000);
  EXPECT_EQ(ErrorOf([&] { workbook.SaveAs("/plates/c.xlsx"); }).Number(),
            error_number::kAutomation);
  EXPECT_FALSE(files.FileExists("/plates/c.xlsx"));
}

}  // namespace
}  // namespace korvex
