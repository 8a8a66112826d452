// The embedded spreadsheet application: reads and writes workbooks in this process, with nothing
// installed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/input_workbook.h"
#include "spreadsheet/read_ahead.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;

class EmbeddedApplication : public Application {
 public:
  // `files` must outlive the application. Workbooks that are expected are read on `jobs` threads,
  // that of the caller among them.
  explicit EmbeddedApplication(FileSystem& files, int jobs = 1);
  ~EmbeddedApplication() override;

  // There is no window to show or redraw, and nothing to confirm.
  void SetVisible(bool) override {}
  void SetScreenUpdating(bool) override {}
  void SetDisplayAlerts(bool) override {}

  Workbook& AddWorkbook(const std::string& full_name) override;
  // The workbook is always read-only; the options are ignored. Error 1004 with the cause when the
  // file cannot be opened.
  Workbook& OpenWorkbook(const std::string& full_name, const OpenOptions& options) override;
  void Expect(const std::vector<std::string>& full_names, const std::string& sheet) override;
  int WorkbookCount() const override;
  Workbook& Workbooks(int index) override;
  // Closes every workbook without saving. Afterwards all members that deal with workbooks throw
  // error 1004.
  void Quit() override;

 private:
  void CheckRunning() const;
  void Drop(const Workbook& closing);

  FileSystem& files_;
  // The workbooks use both, so that these outlive them.
  ReadBufferPool buffers_;
  std::unique_ptr<ReadAhead> read_ahead_;
  std::vector<std::string> inputs_;  // full names of all files opened so far
  std::vector<std::unique_ptr<Workbook>> workbooks_;
  int new_workbooks_ = 0;
  bool has_quit_ = false;
};

class EmbeddedSpreadsheet : public SpreadsheetProgram {
 public:
  // `files` must outlive the applications.
  explicit EmbeddedSpreadsheet(FileSystem& files, int jobs = 1) : files_(files), jobs_(jobs) {}

  std::unique_ptr<Application> CreateApplication() override;
  void CheckOutputName(const std::string& full_name) const override;

 private:
  FileSystem& files_;
  int jobs_;
};

}  // namespace korvex
