#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/error.h"
#include "tests/support/errors.h"
#include "tests/support/fake_spreadsheet.h"
#include "tests/support/fakes.h"
#include "util/basFuncs.h"

namespace korvex {
namespace {

using testing::ElementsAre;

// Refuses everything with one error number.
class RefusingWorkbook : public Workbook {
 public:
  explicit RefusingWorkbook(int number) : number_(number) {}

  std::string Name() const override { return "x.xls"; }
  std::string Path() const override { return "/gone"; }
  int WorksheetCount() const override { throw Error(number_); }
  Worksheet& Worksheets(int) override { throw Error(number_); }
  Worksheet& Worksheets(std::string_view) override { throw Error(number_); }
  void SaveAs(const std::string&) override { throw Error(number_); }
  void Close() override { throw Error(number_); }

 private:
  int number_;
};

// Formatted down to row 9, filled down to `filled_rows`.
class FormattedSheet : public Worksheet {
 public:
  explicit FormattedSheet(int filled_rows) : filled_rows_(filled_rows) {}

  std::string Name() const override { return "data"; }
  void SetName(const std::string&) override {}
  int Index() const override { return 1; }
  void Activate() override {}
  void Delete() override {}
  CellValue Value(int, int) const override { return {}; }
  void SetValue(int, int, const CellValue&) override {}
  CellAddress LastCell() const override { return {9, 4}; }
  int CountA(int row) const override { return row <= filled_rows_ ? 1 : 0; }
  void DeleteColumn(int) override {}

 private:
  int filled_rows_;
};

// Holds two workbooks that cannot be closed.
class StubbornApplication : public Application {
 public:
  explicit StubbornApplication(std::vector<std::string>& calls) : calls_(calls) {}
  ~StubbornApplication() override { calls_.push_back("released"); }

  void SetVisible(bool) override {}
  void SetScreenUpdating(bool) override {}
  void SetDisplayAlerts(bool) override {}
  Workbook& AddWorkbook() override { throw Error(error_number::kAutomation); }
  Workbook& OpenWorkbook(const std::string&, const OpenOptions&) override { return workbook_; }
  int WorkbookCount() const override { return 2; }
  Workbook& Workbooks(int index) override {
    calls_.push_back("close " + std::to_string(index));
    return workbook_;
  }
  void Quit() override {
    calls_.push_back("quit");
    throw Error(error_number::kAutomation);
  }

 private:
  std::vector<std::string>& calls_;
  RefusingWorkbook workbook_{error_number::kAutomation};
};

class WorkbookHelpers : public testing::Test {
 protected:
  Workbook& Open(FakeSheet sheet) {
    platform.files.AddFile("/data/runs/a.xls");
    spreadsheet.Put("/data/runs/a.xls", FakeWorkbookContent{{std::move(sheet)}});
    application = spreadsheet.CreateApplication();
    return application->OpenWorkbook("/data/runs/a.xls", {});
  }

  TestPlatform platform;
  FakeSpreadsheet spreadsheet;
  std::unique_ptr<Application> application;
};

TEST_F(WorkbookHelpers, FindTheLowestRowThatIsNotNumeric) {
  const struct {
    std::initializer_list<FakeSheet::Row> rows;
    int last_row;
    int header_row;
  } cases[] = {
      {{{"12/03/2002"}, {"#"}, {1}, {2}}, 4, 2},
      {{{"#"}, {1}, {"total"}, {""}}, 4, 4},  // a text that is empty is not numeric
      {{{"#"}, {" 7 "}, {FakeCell(), "x"}}, 3, 1},
      {{{1}, {2}}, 2, 0},
      {{}, 1, 0},
  };
  for (const auto& c : cases) {
    Workbook& workbook = Open(FakeSheet("data", c.rows));
    EXPECT_EQ(GetLastRow(GetDataSheet(workbook)), c.last_row);
    EXPECT_EQ(GetHeaderRow(workbook), c.header_row);
  }
}

TEST_F(WorkbookHelpers, PassOverRowsThatAreOnlyFormatted) {
  EXPECT_EQ(GetLastRow(FormattedSheet(9)), 9);
  EXPECT_EQ(GetLastRow(FormattedSheet(4)), 4);
  EXPECT_EQ(GetLastRow(FormattedSheet(0)), 1);
}

TEST_F(WorkbookHelpers, TellAboutAMissingDataSheetAndFailSilently) {
  Workbook& workbook = Open(FakeSheet("results", {{"#"}}));
  EXPECT_EQ(ErrorOf([&] { GetHeaderRow(workbook); }).Number(), error_number::kCannotPerform);
  ASSERT_THAT(platform.dialogs.texts,
              ElementsAre("No \"data\" sheet found in file /.../data/runs/a.xls"));
  EXPECT_EQ(platform.dialogs.buttons.at(0).title, "KORVEX");
  EXPECT_THAT(platform.dialogs.buttons.at(0).buttons, ElementsAre("OK"));

  RefusingWorkbook vanished(error_number::kSubscript);
  EXPECT_EQ(ErrorOf([&] { CheckSheetExists(vanished); }).Number(), error_number::kPathNotFound);
}

TEST_F(WorkbookHelpers, ReportAnyOtherFailureOfTheSheetAndGoOn) {
  RefusingWorkbook workbook(error_number::kAutomation);
  EXPECT_EQ(ErrorOf([&] { CheckSheetExists(workbook); }).Number(), 0);
  ASSERT_EQ(platform.dialogs.plain.size(), 1u);
  EXPECT_THAT(platform.dialogs.texts.at(0), testing::HasSubstr("\"basFuncs.CheckSheetExists\""));
}

TEST_F(WorkbookHelpers, QuitWhateverFailsOnTheWay) {
  std::vector<std::string> calls;
  std::unique_ptr<Application> stubborn = std::make_unique<StubbornApplication>(calls);
  QuitExcel(stubborn);
  EXPECT_FALSE(stubborn);
  EXPECT_THAT(calls, ElementsAre("close 2", "close 1", "quit", "released"));
  QuitExcel(stubborn);  // nothing is left to quit
}

}  // namespace
}  // namespace korvex
