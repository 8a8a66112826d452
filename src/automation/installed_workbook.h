// A workbook that is open in the installed spreadsheet application.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "automation/dispatch.h"
#include "automation/installed_sheet.h"
#include "platform/windows/temporary_files.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;
class InstalledApplication;
struct OutputFormat;

// A file for the application to save into, which is deleted when this goes, or by a later program.
class ScratchFile {
 public:
  // Both `files` and the folder must be there for as long.
  ScratchFile(FileSystem& files, const std::string& folder, std::string_view ending);
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::string& FullName() const { return full_name_; }
  // Removes the files that killed programs have left in the folder.
  static void RemoveLeftovers(const std::string& folder);

 private:
  FileSystem& files_;
  TemporaryName name_;
  std::string full_name_;
};

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
  // Saves in the format of the name, whatever the application's own is: into a scratch file, whose
  // bytes then take the place of the file as a whole. .csv and .tsv are written here, since the
  // application would write their numbers as they are shown, rounded. Refuses to write over a file
  // that the application has read in its life. Every failure is error 1004 with the cause.
  void SaveAs(const std::string& full_name) override;
  // The same, but error 58 when there is a file of that name.
  void SaveAsNew(const std::string& full_name) override;
  // Without saving. Deletes this object.
  void Close() override;

  // Saves a new workbook once in its format, so that what forbids it shows at once.
  void TrySaving();

  // For its sheets.
  const OutputFormat& Format() const { return format_; }
  void Drop(const InstalledSheet& deleted);

 private:
  void Save(const std::string& full_name, bool as_new);
  void SaveScratch(const OutputFormat& format);
  // The one sheet that stands for the application's sheet from now on.
  InstalledSheet& SheetOf(Dispatch sheet);

  InstalledApplication& application_;
  Dispatch workbook_;
  const bool is_input_;
  std::string full_name_;
  const OutputFormat& format_;
  std::unique_ptr<ScratchFile> scratch_;                 // where the application has saved it last
  std::vector<std::unique_ptr<InstalledSheet>> sheets_;  // those that were asked for
};

}  // namespace korvex
