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

// What applications hand on: memory, and the workbook that one has opened and closed alone. A run
// opens a sample first, whose cells serve again when its file comes in turn with the same bytes.
struct HandedOn {
  explicit HandedOn(int jobs) : buffers(static_cast<std::size_t>(jobs)) {}

  ReadBufferPool buffers;  // outlives the sample
  std::unique_ptr<InputWorkbook> sample;
};

class EmbeddedApplication : public Application {
 public:
  // `files` must outlive the application. Workbooks that are expected are read on `jobs` threads,
  // that of the caller among them.
  explicit EmbeddedApplication(FileSystem& files, int jobs = 1,
                               std::shared_ptr<HandedOn> handed_on = nullptr);
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
  std::unique_ptr<InputWorkbook> Read(const std::string& full_name);
  void Drop(const Workbook& closing);

  FileSystem& files_;
  const bool hands_on_;
  // The workbooks use these, so that they outlive them.
  std::shared_ptr<HandedOn> handed_on_;
  std::unique_ptr<ReadAhead> read_ahead_;
  std::vector<std::string> inputs_;  // full names of all files opened so far
  std::vector<std::unique_ptr<Workbook>> workbooks_;
  int new_workbooks_ = 0;
  bool has_quit_ = false;
};

class EmbeddedSpreadsheet : public SpreadsheetProgram {
 public:
  // `files` must outlive the applications.
  explicit EmbeddedSpreadsheet(FileSystem& files, int jobs = 1)
      : files_(files), jobs_(jobs), handed_on_(std::make_shared<HandedOn>(jobs)) {}

  std::unique_ptr<Application> CreateApplication() override;
  void CheckOutputName(const std::string& full_name) const override;

 private:
  FileSystem& files_;
  const int jobs_;
  const std::shared_ptr<HandedOn> handed_on_;
};

}  // namespace korvex
