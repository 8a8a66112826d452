// The installed spreadsheet application, driven through its own object model.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/application_process.h"
#include "automation/dispatch.h"
#include "automation/installed_workbook.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;
struct OutputFormat;

// Error 1004 for a file whose path is longer than the application takes, or whose name it does not.
void CheckFileForApplication(const std::string& full_name);

// Runs in a process of its own, started for this object alone, which ends with this program however
// that ends. Once it has quit, or died, the members that deal with it fail with error 1004.
//
// Nobody sees its windows, so it must never ask anything there: workbooks are opened with an answer
// to every question that they can raise, and without their macros and events.
class InstalledApplication : public Application {
 public:
  // `files` must outlive the application, which saves into `scratch_folder` first. Fails where
  // macros cannot be forbidden.
  InstalledApplication(Dispatch application, FileSystem& files, std::string scratch_folder);
  // Quits unless Quit() was called.
  ~InstalledApplication() override;

  void SetVisible(bool visible) override;
  void SetScreenUpdating(bool update) override;
  void SetDisplayAlerts(bool display) override;
  // Refuses a format that the application is too old for, or may not save in.
  Workbook& AddWorkbook(const std::string& full_name) override;
  // For reading only, whatever the options. A workbook that needs a password is refused, and so is
  // one whose formulas cannot be calculated. Error 1004 names the file.
  Workbook& OpenWorkbook(const std::string& full_name, const OpenOptions& options) override;
  // Refuses files that the application could not open, before the first one is read.
  void Expect(const std::vector<std::string>& full_names, const std::string& sheet) override;
  // Of the workbooks that were added or opened here.
  int WorkbookCount() const override;
  Workbook& Workbooks(int index) override;
  // Closes every workbook without saving, and the application, too, unless the user has opened a
  // workbook in it. Never fails, and waits at most some seconds for its process.
  void Quit() override;

  // For its workbooks.
  FileSystem& Files() const { return files_; }
  const std::string& ScratchFolder() const { return scratch_folder_; }
  const std::vector<std::string>& Inputs() const { return inputs_; }
  // The application's number for .xls or .xlsx, which depends on its version. Error 1004 when that
  // version does not write the format.
  int FormatNumber(const OutputFormat& format) const;
  void Drop(const InstalledWorkbook& closed);

 private:
  // The application; error 1004 once it has quit.
  const Dispatch& Running() const;
  void ForbidMacros();
  void FinishCalculation() const;
  // As it is when a user starts it.
  void LeaveToUser(const Dispatch& application) const;

  ApplicationProcess process_;
  Dispatch application_;
  ComValue macro_security_;  // as it was; empty where the application is too old to have it
  FileSystem& files_;
  const std::string scratch_folder_;
  std::vector<std::string> inputs_;  // full names of all files that were opened
  std::vector<std::unique_ptr<InstalledWorkbook>> workbooks_;
  bool has_quit_ = false;
};

}  // namespace korvex
