// A workbook that is open in the installed spreadsheet application.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/dispatch.h"
#include "automation/installed_sheet.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class InstalledApplication;
struct OutputFormat;

class InstalledWorkbook : public Workbook {
 public:
  // `full_name` is the file that was opened, or empty for a new workbook, which will be saved in
  // the format. `application` owns the workbook.
  InstalledWorkbook(InstalledApplication& application, Dispatch workbook, std::string full_name,
                    const OutputFormat& format);

  // From the name by which the file was opened or saved: in a folder that is mirrored on a server
  // the application answers with the address on the server.
  std::string Name() const override;
  std::string Path() const override;
  int WorksheetCount() const override;
  Worksheet& Worksheets(int index) override;
  // In any letter case. Error 9 names the workbook and the sheet.
  Worksheet& Worksheets(std::string_view name) override;
  // Saves in the format of the name, whatever the application's own is; .csv and .tsv are written
  // here, since the application would write their numbers as they are shown, rounded. Refuses to
  // write over a file that the application has read in its life. Every failure is error 1004 with
  // the cause.
  void SaveAs(const std::string& full_name) override;
  // The same, but error 58 when there is a file of that name.
  void SaveAsNew(const std::string& full_name) override;
  // Without saving. Deletes this object.
  void Close() override;

  // For its sheets.
  const OutputFormat& Format() const { return format_; }
  void Drop(const InstalledSheet& deleted);

 private:
  void Save(const std::string& full_name, bool as_new);
  // The one sheet that stands for the application's sheet from now on.
  InstalledSheet& SheetOf(Dispatch sheet);

  InstalledApplication& application_;
  Dispatch workbook_;
  const bool is_input_;
  std::string full_name_;
  const OutputFormat& format_;
  std::vector<std::unique_ptr<InstalledSheet>> sheets_;  // those that were asked for
};

}  // namespace korvex
