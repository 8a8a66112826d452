#include "engine/long_form.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/support/campaign.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr char kFormer[] = "of the last run";

class LongFormTest : public testing::Test {
 protected:
  // The sample is the first file of the first sub-folder.
  void Begin(const std::string& full_name) {
    application.emplace(Files());
    structure.Constructor(campaign.folder, {}, &*application);
    form.emplace(full_name, "screen", *application, structure);
    form->WriteHeaders();
  }
  // Writes the rows of an input so many times over.
  void Add(const std::string& name, int times = 1) {
    Workbook& input = application->OpenWorkbook(campaign.Path(name), {});
    structure.RefreshAvailableCols(input);
    DataSheet sheet(input, structure);
    sheet.ReadLayout(99);
    form->BeginSheet(sheet, name);
    for (; times > 0; --times) {
      for (int row = sheet.FirstRow(); sheet.HasRow(row); ++row) {
        form->Write(row, sheet.MeasuredValue(row));
      }
    }
    input.Close();
  }
  MemoryFileSystem& Files() { return campaign.platform.files; }

  Campaign campaign;
  std::optional<EmbeddedApplication> application;
  clsStructure structure;
  std::optional<LongForm> form;
};

TEST_F(LongFormTest, HoldsEveryReadingInARowOfItsOwn) {
  campaign.SetKeys({"plate", "compound #"});
  campaign.SetOutputs({"compound #", "VALUE", "value_2", "Row", "chem_num", "Delta OD", "PLATE"});
  campaign.PutSheets(
      "a/P1-3-2.xls",
      {{"data",
        {{"12/03/2002 10:15"},
         {"#", "compound #", "plate", "chem_num", "value", "value_2", "row", "Delta OD"},
         {1, "0017", 1 / 3.0, "a,b", CellValue::Date(37327), "17", "=A1", 0.1 + 0.2},
         {2, {}, CellValue::ErrorCode(42), "a\tb", true, "", 3, "OVRFLW"},
         {3, "K3", 7, "", "", "", "", {}},
         {4, "K3", 7, "", "", "", "", CellValue::Date(37327.5)},
         {5, "K3", 7, "", "", "", "", CellValue::Date(0.25)}}}});
  // A day that is no number, none at all, one that is rounded; and columns that a sheet lacks.
  const std::vector<std::vector<TestCell>> rows = {
      {"#", "Delta OD", "compound #"}, {1, -1, "K4"}, {2, "0,5", "K5"}};
  for (const char* name : {"b/P1-x-1.xls", "b/33.xls", "b/P1-2.6-1.xls"}) {
    campaign.PutSheets(name, {{"data", rows}});
  }
  const std::string expected =
      "plate,chem_num,VALUE,value_2,Row,chem_num_2,day,replication,value_3,file,row_2\r\n"
      "0.333333333333333,0017,3/12/2002,17,=A1,\"a,b\",3,2,0.30000000000000004,a/P1-3-2.xls,3\r\n"
      "Error 2042,,1,,3,a\tb,3,2,OVRFLW,a/P1-3-2.xls,4\r\n"
      "7,K3,,,,,3,2,,a/P1-3-2.xls,5\r\n"
      "7,K3,,,,,3,2,2002-03-12 12:00:00,a/P1-3-2.xls,6\r\n"
      "7,K3,,,,,3,2,0.25,a/P1-3-2.xls,7\r\n"
      ",K4,,,,,,1,-1,b/P1-x-1.xls,2\r\n"
      ",K5,,,,,,1,\"0,5\",b/P1-x-1.xls,3\r\n"
      ",K4,,,,,,33,-1,b/33.xls,2\r\n"
      ",K5,,,,,,33,\"0,5\",b/33.xls,3\r\n"
      ",K4,,,,,3,1,-1,b/P1-2.6-1.xls,2\r\n"
      ",K5,,,,,3,1,\"0,5\",b/P1-2.6-1.xls,3\r\n";
  for (const std::string name : {"long.csv", "long.tsv", "long.xlsx"}) {
    SCOPED_TRACE(name);
    Begin("/out/" + name);
    for (const char* input : {"a/P1-3-2.xls", "b/P1-x-1.xls", "b/33.xls", "b/P1-2.6-1.xls"}) {
      Add(input);
    }
    EXPECT_EQ(form->RowCount(), 12);
    EXPECT_EQ(form->ColumnCount(), 11);
    form->Save();
    EXPECT_EQ(application->WorkbookCount(), 0);
  }
  EXPECT_EQ(Files().Content("/out/long.csv"), "\xEF\xBB\xBF" + expected);
  // The same, but for the separator and what has to be quoted.
  std::string tabs = "\xEF\xBB\xBF" + expected;
  std::replace(tabs.begin(), tabs.end(), '\t', '!');
  std::replace(tabs.begin(), tabs.end(), ',', '\t');
  for (const auto& [quoted, plain] : {std::pair<std::string, std::string>{"\"a\tb\"", "a,b"},
                                      {"a!b", "\"a\tb\""},
                                      {"\"0\t5\"", "0,5"}}) {
    for (std::size_t at = 0; (at = tabs.find(quoted)) != std::string::npos;) {
      tabs.replace(at, quoted.size(), plain);
    }
  }
  EXPECT_EQ(Files().Content("/out/long.tsv"), tabs);
  // The workbook keeps the kinds of the values.
  const Worksheet& sheet = application->OpenWorkbook("/out/long.xlsx", {}).Worksheets(1);
  EXPECT_EQ(sheet.Name(), "screen");
  EXPECT_EQ(sheet.LastCell(), (CellAddress{12, 11}));
  EXPECT_EQ(sheet.Value(1, 9), CellValue::Text("value_3"));
  EXPECT_EQ(sheet.Value(2, 2), CellValue::Text("0017"));
  EXPECT_EQ(sheet.Value(2, 4), CellValue::Number(17));
  EXPECT_EQ(sheet.Value(2, 9), CellValue::Number(0.1 + 0.2));
  EXPECT_EQ(sheet.Value(5, 9), CellValue::Date(37327.5));
  EXPECT_EQ(sheet.Value(7, 7), CellValue());
  EXPECT_EQ(sheet.Value(12, 10), CellValue::Text("b/P1-2.6-1.xls"));
}

TEST_F(LongFormTest, TakesItsPlaceWholeOrNotAtAll) {
  campaign.Put("a/P1-3-1.xls", {{1, "K1", 7, 0.25}, {2, "K2", 7, 0.5}});
  const std::string rows = "K1,7,3,1,0.25,a/P1-3-1.xls,3\r\nK2,7,3,1,0.5,a/P1-3-1.xls,4\r\n";
  std::string whole =
      "\xEF\xBB\xBF"
      "chem_id,plate,day,replication,value,file,row\r\n";
  for (int i = 0; i < 3000; ++i) whole += rows;
  for (const std::string name : {"/out/long.csv", "/out/long.xlsx"}) {
    SCOPED_TRACE(name);
    Files().AddFile(name, kFormer);
    Begin(name);
    Add("a/P1-3-1.xls", 3000);
    form.reset();
    EXPECT_EQ(Files().Content(name), kFormer) << "dropped";

    Begin(name);
    Add("a/P1-3-1.xls", 3000);
    EXPECT_EQ(ErrorOf([&] { form->SaveAsNew(); }).Number(), error_number::kFileExists);
    EXPECT_EQ(Files().Content(name), kFormer);

    Begin(name);
    Add("a/P1-3-1.xls", 3000);
    EXPECT_EQ(Files().Content(name), kFormer) << "not yet";
    form->Save();
  }
  EXPECT_EQ(Files().Content("/out/long.csv"), whole);

  // Workbooks are told by their content, whatever they are called.
  const std::string content = Files().Content(campaign.Path("a/P1-3-1.xls"));
  Files().AddFile(campaign.Path("a/P1-3-2.csv"), content);
  Begin(campaign.folder + "/a/../a/P1-3-2.csv");
  Add("a/P1-3-2.csv");
  EXPECT_THAT(ErrorOf([&] { form->Save(); }).Description(), HasSubstr("was read as input"));
  EXPECT_EQ(Files().Content(campaign.Path("a/P1-3-2.csv")), content);

  Begin("/out/new.tsv");
  Files().LimitSpace(70'000);
  const Error full = ErrorOf([&] { Add("a/P1-3-1.xls", 9000); });
  EXPECT_EQ(full.Number(), error_number::kAutomation);
  EXPECT_THAT(full.Description(), StartsWith("The workbook cannot be saved as /out/new.tsv: "));
  form.reset();
  EXPECT_FALSE(Files().FileExists("/out/new.tsv"));
}

TEST_F(LongFormTest, HasNamesOfItsOwn) {
  for (const char* name : {"/out/a.csv", "/out/a.TSV", "/out/a.b.xlsx"}) {
    EXPECT_EQ(ErrorOf([&] { LongForm::CheckName(name); }).Number(), 0) << name;
  }
  for (const char* name : {"/out/a.xls", "/out/a", "/out/a.ods", "/out/a.csv.gz"}) {
    const Error error = ErrorOf([&] { LongForm::CheckName(name); });
    EXPECT_EQ(error.Number(), error_number::kAutomation) << name;
    EXPECT_THAT(error.Description(), HasSubstr(".tsv")) << name;
  }
}

TEST(TakenReadings, AreThoseOfOneKeyAndOneReplicationNumber) {
  TakenReadings readings;
  const CellValue value = CellValue::Number(0);
  const struct {
    std::size_t key;
    std::int16_t replication;
    CellValue value;
    bool is_free;
  } cases[] = {
      {0, 1, value, true},       {9, 1, CellValue::Text("x"), true},
      {4, 1, {}, true},          {0, 33, value, true},
      {9, 33, value, true},      {0, 1, {}, false},
      {9, 1, value, false},      {4, 1, CellValue::Text(" "), true},
      {4, 1, value, true},       {4, 1, value, false},
      {10'000, 1, value, true},  {10'000, 33, value, true},
      {10'000, 1, value, false}, {9, 33, CellValue::Text(""), false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(readings.Take(c.key, c.replication, c.value), c.is_free)
        << c.key << " " << c.replication;
  }
}

}  // namespace
}  // namespace korvex
