// The spreadsheet application that is installed on this machine, if there is one.
#pragma once

#include <memory>
#include <string>

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

  // `files` must outlive the applications.
  explicit InstalledSpreadsheet(FileSystem& files, std::string program_id = kProgramId);

  // Starts a process, invisible until it is told otherwise. Error 429 with the cause.
  std::unique_ptr<Application> CreateApplication() override;
  void CheckOutputName(const std::string& full_name) const override;

 private:
  ComApartment apartment_;
  FileSystem& files_;
  std::string program_id_;
};

}  // namespace korvex
