// A new workbook that is being built in memory, with three worksheets to begin with.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/cells/text_pool.h"
#include "spreadsheet/output_sheet.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;
struct OutputFormat;
struct SheetContent;

// Its texts are stored once, in a pool that all sheets share. Cells are checked when they are set,
// against the format that the workbook was made for.
class OutputWorkbook : public Workbook {
 public:
  // `name` is the workbook's name until it is saved, `format` the one it will be saved in; `inputs`
  // are files that it must not replace. All but the name must outlive the workbook. Close() calls
  // `close`, which may destroy the workbook.
  OutputWorkbook(FileSystem& files, std::string name, const OutputFormat& format,
                 const std::vector<std::string>& inputs,
                 std::function<void(const Workbook&)> close);

  std::string Name() const override { return name_; }
  std::string Path() const override { return path_; }  // empty until saved
  int WorksheetCount() const override { return static_cast<int>(sheets_.size()); }
  // Both are error 9 for a sheet that does not exist. Sheets count from 1; letter case is ignored.
  Worksheet& Worksheets(int index) override;
  Worksheet& Worksheets(std::string_view name) override;
  // Gives the workbook the name of the file. Equal content gives equal files, byte for byte. Error
  // 1004 with the cause when saving fails; cells that the format cannot hold fail before anything
  // is written.
  void SaveAs(const std::string& full_name) override { Save(full_name, false); }
  void SaveAsNew(const std::string& full_name) override { Save(full_name, true); }
  // Drops the workbook, saved or not.
  void Close() override;

  // For its sheets.
  const OutputFormat& Format() const { return format_; }
  const TextPool& Texts() const { return texts_; }
  TextPool& Texts() { return texts_; }
  int IndexOf(const OutputSheet& sheet) const;
  void Activate(const OutputSheet& sheet) { active_ = &sheet; }
  void Delete(const OutputSheet& sheet);
  // Error 1004 with the rule that the name breaks. `sheet` is the one that is to have the name.
  void CheckSheetName(std::string_view name, const OutputSheet& sheet) const;

 private:
  void Save(const std::string& full_name, bool as_new);
  void WriteFile(const OutputFormat& format, const std::string& target, bool as_new);
  std::vector<SheetContent> Contents() const;

  FileSystem& files_;
  const std::vector<std::string>& inputs_;
  std::string name_;
  const OutputFormat& format_;
  std::string path_;
  std::function<void(const Workbook&)> close_;
  TextPool texts_;
  std::vector<std::unique_ptr<OutputSheet>> sheets_;
  const OutputSheet* active_;
};

}  // namespace korvex
