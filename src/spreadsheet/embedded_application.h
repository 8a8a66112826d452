// The spreadsheet application that runs inside this process: it reads and writes workbooks
// itself and needs nothing installed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/input_workbook.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;

class EmbeddedApplication : public Application {
 public:
  // `files` must outlive the application.
  explicit EmbeddedApplication(FileSystem& files);
  ~EmbeddedApplication() override;

  // There is no window to show or to redraw, and nothing ever asks.
  void SetVisible(bool) override {}
  void SetScreenUpdating(bool) override {}
  void SetDisplayAlerts(bool) override {}

  Workbook& AddWorkbook(const std::string& full_name) override;
  // The workbook is read-only whatever the options say; they have no further meaning here. Error
  // 1004 names the cause when the file cannot be opened.
  Workbook& OpenWorkbook(const std::string& full_name, const OpenOptions& options) override;
  int WorkbookCount() const override;
  Workbook& Workbooks(int index) override;
  // Closes every workbook without saving. From then on the members above that deal with workbooks
  // are refused with error 1004.
  void Quit() override;

 private:
  void CheckRunning() const;
  void Drop(const Workbook& closing);

  FileSystem& files_;
  ReadBufferPool buffers_;           // outlives the workbooks
  std::vector<std::string> inputs_;  // full names of all files that were opened; outlives them too
  std::vector<std::unique_ptr<Workbook>> workbooks_;
  int new_workbooks_ = 0;
  bool has_quit_ = false;
};

class EmbeddedSpreadsheet : public SpreadsheetProgram {
 public:
  // `files` must outlive the applications.
  explicit EmbeddedSpreadsheet(FileSystem& files) : files_(files) {}

  std::unique_ptr<Application> CreateApplication() override;
  void CheckOutputName(const std::string& full_name) const override;

 private:
  FileSystem& files_;
};

}  // namespace korvex
