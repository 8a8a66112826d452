// The embedded spreadsheet application, watched while it works for a test.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/embedded_application.h"

namespace korvex {

// A number, a text that outlives the test (a literal), nothing, or any other value.
struct TestCell {
  TestCell() = default;
  TestCell(double number) : value(CellValue::Number(number)) {}
  TestCell(int number) : TestCell(static_cast<double>(number)) {}
  TestCell(const char* text) : value(CellValue::Text(text)) {}
  TestCell(const CellValue& other) : value(other) {}

  CellValue value;
};

struct TestSheet {
  std::string name;
  std::vector<std::vector<TestCell>> rows;
};

class WatchedSpreadsheet : public EmbeddedSpreadsheet {
 public:
  explicit WatchedSpreadsheet(FileSystem& files) : EmbeddedSpreadsheet(files), files_(files) {}

  std::unique_ptr<Application> CreateApplication() override;
  // Saves a workbook of up to three sheets.
  void Put(const std::string& full_name, const std::vector<TestSheet>& sheets);

  std::vector<std::string> calls;  // that reached the applications themselves
  int running = 0;                 // applications that have not been told to quit
  std::function<void()> on_quit;

 private:
  FileSystem& files_;
};

}  // namespace korvex
