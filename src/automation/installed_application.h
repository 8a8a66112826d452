// The installed spreadsheet application, driven through its own object model.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/dispatch.h"
#include "automation/installed_workbook.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;
struct OutputFormat;

// Runs in a process of its own, started for this object alone. Once it has quit, or died, the
// members that deal with it fail with error 1004.
class InstalledApplication : public Application {
 public:
  // Macros of workbooks that are opened do not run. `files` must outlive the application.
  InstalledApplication(Dispatch application, FileSystem& files);
  // Quits unless Quit() was called.
  ~InstalledApplication() override;

  void SetVisible(bool visible) override;
  void SetScreenUpdating(bool update) override;
  void SetDisplayAlerts(bool display) override;
  // Refuses a format that the application is too old for.
  Workbook& AddWorkbook(const std::string& full_name) override;
  // Options that are not used are not passed on. Error 1004 names the file.
  Workbook& OpenWorkbook(const std::string& full_name, const OpenOptions& options) override;
  // Of the workbooks that were added or opened here.
  int WorkbookCount() const override;
  Workbook& Workbooks(int index) override;
  // Closes every workbook without saving and releases the application. Never fails.
  void Quit() override;

  // For its workbooks.
  FileSystem& Files() const { return files_; }
  const std::vector<std::string>& Inputs() const { return inputs_; }
  // The application's number for .xls or .xlsx, which depends on its version. Error 1004 when that
  // version does not write the format.
  int FormatNumber(const OutputFormat& format) const;
  void Drop(const InstalledWorkbook& closed);

 private:
  // The application; error 1004 once it has quit.
  const Dispatch& Running() const;

  Dispatch application_;
  FileSystem& files_;
  std::vector<std::string> inputs_;  // full names of all files that were opened
  std::vector<std::unique_ptr<InstalledWorkbook>> workbooks_;
  bool has_quit_ = false;
};

}  // namespace korvex
