// A spreadsheet application in memory: workbooks are laid under their full names before a run, and
// what a run saves is found there afterwards. Every call of the object model is recorded but the
// reading and writing of single cells.
#pragma once

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/spreadsheet.h"

namespace korvex {

// A cell that owns its text. Made from a number or a text, or by the named functions.
struct FakeCell {
  FakeCell() = default;
  FakeCell(double value) : kind(CellKind::kNumber), number(value) {}
  FakeCell(int value) : FakeCell(static_cast<double>(value)) {}
  FakeCell(const char* value) : kind(CellKind::kText), text(value) {}
  FakeCell(std::string value) : kind(CellKind::kText), text(std::move(value)) {}
  static FakeCell Of(const CellValue& value);

  CellValue View() const { return {kind, number, text}; }
  friend bool operator==(const FakeCell&, const FakeCell&) = default;

  CellKind kind = CellKind::kEmpty;
  double number = 0;
  std::string text;
};

struct FakeSheet {
  using Row = std::vector<FakeCell>;

  FakeSheet() = default;
  FakeSheet(std::string sheet_name, std::initializer_list<Row> rows);

  FakeCell At(int row, int column) const;
  // Row 1's texts up to its last filled cell; "" for an empty one.
  std::vector<std::string> Headers() const;

  std::string name;
  std::map<std::pair<int, int>, FakeCell> cells;  // by row and column, one-based; none is Empty
};

struct FakeWorkbookContent {
  std::vector<FakeSheet> sheets;
};

class FakeSpreadsheet : public SpreadsheetProgram {
 public:
  // Refuses names that end in ".xlsx".
  void CheckOutputName(const std::string& full_name) const override;
  std::unique_ptr<Application> CreateApplication() override;

  // Lays a workbook with the one sheet "data" under a full name.
  void Put(const std::string& full_name, std::initializer_list<FakeSheet::Row> data_rows);
  void Put(const std::string& full_name, FakeWorkbookContent content);
  // The only sheet of a workbook that was saved.
  const FakeSheet& Saved(const std::string& full_name) const;

  std::map<std::string, FakeWorkbookContent> workbooks;
  std::map<std::string, FakeWorkbookContent> saved;
  std::vector<std::string> calls;
  int applications_running = 0;
  int workbooks_open = 0;
  int fail_save_with = 0;  // error number that SaveAs raises
};

}  // namespace korvex
