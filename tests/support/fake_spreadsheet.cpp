#include "tests/support/fake_spreadsheet.h"

#include <algorithm>

#include "platform/error.h"
#include "util/cell_text.h"
#include "util/text.h"

namespace korvex {
namespace {

class OpenBook;

class OpenSheet : public Worksheet {
 public:
  OpenSheet(OpenBook& book, FakeSheet content) : book_(book), content_(std::move(content)) {}

  std::string Name() const override { return content_.name; }
  void SetName(const std::string& name) override { content_.name = name; }
  int Index() const override;
  void Activate() override;
  void Delete() override;
  CellValue Value(int row, int column) const override {
    if (row < 1 || column < 1) throw Error(error_number::kAutomation);
    const auto found = content_.cells.find({row, column});
    return found == content_.cells.end() ? CellValue() : found->second.View();
  }
  void SetValue(int row, int column, const CellValue& value) override {
    if (row < 1 || column < 1) throw Error(error_number::kAutomation);
    content_.cells.erase({row, column});
    if (value.kind != CellKind::kEmpty) content_.cells[{row, column}] = FakeCell::Of(value);
  }
  CellAddress LastCell() const override {
    CellAddress last;
    for (const auto& [place, cell] : content_.cells) {
      last.row = std::max(last.row, place.first);
      last.column = std::max(last.column, place.second);
    }
    return last;
  }
  int CountA(int row) const override {
    return static_cast<int>(std::count_if(content_.cells.begin(), content_.cells.end(),
                                          [&](const auto& c) { return c.first.first == row; }));
  }
  void DeleteColumn(int column) override {
    std::map<std::pair<int, int>, FakeCell> moved;
    for (const auto& [place, cell] : content_.cells) {
      if (place.second == column) continue;
      moved[{place.first, place.second - (place.second > column ? 1 : 0)}] = cell;
    }
    content_.cells = std::move(moved);
  }

  const FakeSheet& Content() const { return content_; }

 private:
  OpenBook& book_;
  FakeSheet content_;
};

class RunningApplication;

class OpenBook : public Workbook {
 public:
  OpenBook(RunningApplication& application, std::string full_name,
           const FakeWorkbookContent& content)
      : application_(application), full_name_(std::move(full_name)) {
    for (const FakeSheet& sheet : content.sheets) {
      sheets_.push_back(std::make_unique<OpenSheet>(*this, sheet));
    }
  }

  std::string Name() const override { return full_name_.substr(Cut() + 1); }
  std::string Path() const override { return full_name_.substr(0, Cut()); }
  int WorksheetCount() const override { return static_cast<int>(sheets_.size()); }
  Worksheet& Worksheets(int index) override {
    return *sheets_.at(static_cast<std::size_t>(index - 1));
  }
  Worksheet& Worksheets(std::string_view name) override {
    for (const auto& sheet : sheets_) {
      if (EqualText(sheet->Name(), name)) return *sheet;
    }
    throw Error(error_number::kSubscript);
  }
  void SaveAs(const std::string& full_name) override;
  void Close() override;

  int IndexOf(const OpenSheet* sheet) const {
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
      if (sheets_[i].get() == sheet) return static_cast<int>(i + 1);
    }
    return 0;
  }
  void Delete(const OpenSheet* sheet) { sheets_.erase(sheets_.begin() + IndexOf(sheet) - 1); }
  FakeSpreadsheet& Program();

 private:
  std::size_t Cut() const { return full_name_.find_last_of("\\/"); }

  RunningApplication& application_;
  std::string full_name_;
  std::vector<std::unique_ptr<OpenSheet>> sheets_;
};

class RunningApplication : public Application {
 public:
  explicit RunningApplication(FakeSpreadsheet& program) : program_(program) {
    ++program_.applications_running;
    program_.calls.push_back("CreateApplication");
  }

  void SetVisible(bool visible) override { Record("Visible", visible); }
  void SetScreenUpdating(bool update) override { Record("ScreenUpdating", update); }
  void SetDisplayAlerts(bool display) override { Record("DisplayAlerts", display); }
  Workbook& AddWorkbook() override {
    program_.calls.push_back("Workbooks.Add");
    FakeWorkbookContent content;
    for (const char* name : {"Sheet1", "Sheet2", "Sheet3"}) content.sheets.push_back({name, {}});
    return Open("Book1", content);
  }
  Workbook& OpenWorkbook(const std::string& full_name, const OpenOptions& options) override {
    std::string call = "Workbooks.Open " + full_name;
    if (options.read_only) call += " ReadOnly";
    if (options.ignore_read_only_recommended) call += " IgnoreReadOnlyRecommended";
    if (!options.add_to_recent_files) call += " AddToMru:=False";
    program_.calls.push_back(call);
    const auto found = program_.workbooks.find(full_name);
    if (found == program_.workbooks.end()) {
      throw Error(error_number::kAutomation, full_name + " cannot be opened.");
    }
    return Open(full_name, found->second);
  }
  int WorkbookCount() const override { return static_cast<int>(books_.size()); }
  Workbook& Workbooks(int index) override {
    return *books_.at(static_cast<std::size_t>(index - 1));
  }
  void Quit() override {
    program_.calls.push_back("Quit");
    --program_.applications_running;
  }

  void Drop(const OpenBook* book) {
    --program_.workbooks_open;
    std::erase_if(books_, [&](const auto& open) { return open.get() == book; });
  }
  FakeSpreadsheet& Program() { return program_; }

 private:
  void Record(const char* property, bool value) {
    program_.calls.push_back(std::string(property) + (value ? " = True" : " = False"));
  }
  Workbook& Open(const std::string& full_name, const FakeWorkbookContent& content) {
    ++program_.workbooks_open;
    books_.push_back(std::make_unique<OpenBook>(*this, full_name, content));
    return *books_.back();
  }

  FakeSpreadsheet& program_;
  std::vector<std::unique_ptr<OpenBook>> books_;
};

FakeSpreadsheet& OpenBook::Program() {
  return application_.Program();
}

void OpenBook::SaveAs(const std::string& full_name) {
  Program().calls.push_back("SaveAs " + full_name);
  if (Program().fail_save_with != 0) throw Error(Program().fail_save_with);
  FakeWorkbookContent content;
  for (const auto& sheet : sheets_) content.sheets.push_back(sheet->Content());
  Program().saved[full_name] = std::move(content);
}

void OpenBook::Close() {
  Program().calls.push_back("Close " + Name());
  application_.Drop(this);
}

int OpenSheet::Index() const {
  return book_.IndexOf(this);
}

void OpenSheet::Activate() {
  book_.Program().calls.push_back("Activate " + content_.name);
}

void OpenSheet::Delete() {
  book_.Program().calls.push_back("Delete " + content_.name);
  book_.Delete(this);
}

}  // namespace

FakeCell FakeCell::Of(const CellValue& value) {
  FakeCell cell;
  cell.kind = value.kind;
  cell.number = value.number;
  cell.text = value.text;
  return cell;
}

FakeSheet::FakeSheet(std::string sheet_name, std::initializer_list<Row> rows)
    : name(std::move(sheet_name)) {
  int row_number = 0;
  for (const Row& row : rows) {
    ++row_number;
    int column = 0;
    for (const FakeCell& cell : row) {
      ++column;
      if (cell.kind != CellKind::kEmpty) cells[{row_number, column}] = cell;
    }
  }
}

FakeCell FakeSheet::At(int row, int column) const {
  const auto found = cells.find({row, column});
  return found == cells.end() ? FakeCell() : found->second;
}

std::vector<std::string> FakeSheet::Headers() const {
  std::vector<std::string> headers;
  for (const auto& [place, cell] : cells) {
    if (place.first != 1) break;
    headers.resize(static_cast<std::size_t>(place.second));
    headers.back() = CellText(cell.View());
  }
  return headers;
}

void FakeSpreadsheet::CheckOutputName(const std::string& full_name) const {
  if (full_name.ends_with(".xlsx")) {
    throw Error(error_number::kAutomation, "cannot save " + full_name);
  }
}

std::unique_ptr<Application> FakeSpreadsheet::CreateApplication() {
  return std::make_unique<RunningApplication>(*this);
}

void FakeSpreadsheet::Put(const std::string& full_name,
                          std::initializer_list<FakeSheet::Row> data_rows) {
  Put(full_name, FakeWorkbookContent{{FakeSheet("data", data_rows)}});
}

void FakeSpreadsheet::Put(const std::string& full_name, FakeWorkbookContent content) {
  workbooks[full_name] = std::move(content);
}

const FakeSheet& FakeSpreadsheet::Saved(const std::string& full_name) const {
  return saved.at(full_name).sheets.at(0);
}

}  // namespace korvex
