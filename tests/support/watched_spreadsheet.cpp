#include "tests/support/watched_spreadsheet.h"

namespace korvex {
namespace {

class WatchedApplication : public EmbeddedApplication {
 public:
  WatchedApplication(FileSystem& files, WatchedSpreadsheet& watch)
      : EmbeddedApplication(files), watch_(watch) {
    ++watch_.running;
    watch_.calls.push_back("CreateApplication");
  }

  void SetVisible(bool visible) override { Record("Visible", visible); }
  void SetScreenUpdating(bool update) override { Record("ScreenUpdating", update); }
  void SetDisplayAlerts(bool display) override { Record("DisplayAlerts", display); }
  Workbook& AddWorkbook(const std::string& full_name) override {
    watch_.calls.push_back("Add");
    return EmbeddedApplication::AddWorkbook(full_name);
  }
  Workbook& OpenWorkbook(const std::string& full_name, const OpenOptions& options) override {
    std::string call = "Open " + full_name;
    if (options.read_only) call += " ReadOnly";
    if (options.ignore_read_only_recommended) call += " IgnoreReadOnlyRecommended";
    if (!options.add_to_recent_files) call += " AddToMru:=False";
    watch_.calls.push_back(call);
    return EmbeddedApplication::OpenWorkbook(full_name, options);
  }
  void Quit() override {
    --watch_.running;
    if (watch_.on_quit) watch_.on_quit();
    watch_.calls.push_back("Quit");
    EmbeddedApplication::Quit();
  }

 private:
  void Record(const char* property, bool value) {
    watch_.calls.push_back(std::string(property) + (value ? " = True" : " = False"));
  }

  WatchedSpreadsheet& watch_;
};

}  // namespace

std::unique_ptr<Application> WatchedSpreadsheet::CreateApplication() {
  return std::make_unique<WatchedApplication>(files_, *this);
}

void WatchedSpreadsheet::Put(const std::string& full_name, const std::vector<TestSheet>& sheets) {
  EmbeddedApplication writer(files_);
  Workbook& workbook = writer.AddWorkbook(full_name);
  for (std::size_t i = sheets.size(); i < 3; ++i) workbook.Worksheets(1).Delete();
  for (int i = 1; i <= workbook.WorksheetCount(); ++i) {
    const TestSheet& content = sheets[static_cast<std::size_t>(i - 1)];
    Worksheet& sheet = workbook.Worksheets(i);
    sheet.SetName(content.name);
    int row_number = 0;
    for (const auto& row : content.rows) {
      ++row_number;
      int column = 0;
      for (const TestCell& cell : row) sheet.SetValue(row_number, ++column, cell.value);
    }
  }
  workbook.SaveAs(full_name);
}

}  // namespace korvex
