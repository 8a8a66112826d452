// The spreadsheet application that is installed on this machine, if there is one.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "automation/call_watcher.h"
#include "platform/windows/com_apartment.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;

// Initializes COM on its thread for its own lifetime; its applications are used on that thread and
// must not outlive it.
class InstalledSpreadsheet : public SpreadsheetProgram {
 public:
  static constexpr char kProgramId[] = "Excel.Application";

  // Whether the name is registered; nothing is started.
  static bool IsInstalled(const std::string& program_id = kProgramId);

  // `files` must outlive the applications. `stop_is_asked` tells from another thread whether the
  // user wants the run to stop: a call that does not return is given up then.
  explicit InstalledSpreadsheet(FileSystem& files, std::function<bool()> stop_is_asked = {},
                                std::string program_id = kProgramId);

  // Starts a process, invisible until it is told otherwise. Waits for one that is just ending.
  // Error 429 with the cause and what to do.
  std::unique_ptr<Application> CreateApplication() override;
  void CheckOutputName(const std::string& full_name) const override;

 private:
  ComApartment apartment_;
  CallWatcher watcher_;
  FileSystem& files_;
  std::string program_id_;
};

}  // namespace korvex
