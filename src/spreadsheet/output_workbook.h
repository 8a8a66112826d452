// A new workbook that is being built in memory, with three worksheets to begin with.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/spreadsheet.h"
#include "spreadsheet/close_handler.h"
#include "spreadsheet/output_sheet.h"
#include "spreadsheet/text_pool.h"

namespace korvex {

class FileSystem;

class OutputWorkbook : public Workbook {
 public:
  // `name` is what the workbook is called until it is saved; `inputs` are the files that must not
  // be saved over. Both `files` and `inputs` must outlive it.
  OutputWorkbook(FileSystem& files, std::string name, const std::vector<std::string>& inputs,
                 CloseHandler close);

  std::string Name() const override { return name_; }
  std::string Path() const override { return path_; }  // empty until saved
  int WorksheetCount() const override { return static_cast<int>(sheets_.size()); }
  Worksheet& Worksheets(int index) override;
  Worksheet& Worksheets(std::string_view name) override;
  // Writes an .xls file (BIFF8); the workbook then goes by its name. Equal content gives equal
  // files, byte for byte. Error 1004 names the cause when that fails.
  void SaveAs(const std::string& full_name) override;
  void Close() override;

  // For its sheets.
  const TextPool& Texts() const { return texts_; }
  TextPool& Texts() { return texts_; }
  int IndexOf(const OutputSheet& sheet) const;
  void Activate(const OutputSheet& sheet) { active_ = &sheet; }
  void Delete(const OutputSheet& sheet);
  // Error 1004 with the rule that the name breaks. `sheet` is the one to be called so.
  void CheckSheetName(std::string_view name, const OutputSheet& sheet) const;

 private:
  void WriteFile(const std::string& target) const;

  FileSystem& files_;
  const std::vector<std::string>& inputs_;
  std::string name_;
  std::string path_;
  CloseHandler close_;
  TextPool texts_;
  std::vector<std::unique_ptr<OutputSheet>> sheets_;
  const OutputSheet* active_;
};

}  // namespace korvex
