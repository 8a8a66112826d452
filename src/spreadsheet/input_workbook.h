// A workbook that is open for reading only.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/cells/workbook_reader.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;

// Keeps the memory of a closed workbook for the next one, unless it is unusually much.
class ReadBufferPool {
 public:
  // New buffers while the kept ones are in use.
  std::unique_ptr<ReadBuffers> Take();
  void GiveBack(std::unique_ptr<ReadBuffers> buffers);

 private:
  std::unique_ptr<ReadBuffers> spare_;
};

// The cells of a sheet are read when they are first asked for. Every change and SaveAs is error
// 1004, and so is a cell outside of the rows and columns of the format. Columns up to
// kLastHeaderColumn are an exception, because the program looks for headers there: they are Empty.
class InputWorkbook : public Workbook {
 public:
  // Opens `full_name`. The pool must outlive the workbook; the file system is needed only during
  // this call. Close() calls `on_close`, which may destroy the workbook. Errors: those of the file
  // system; 1004 with path and cause for a file that is no workbook, damaged or protected; 7 for
  // one that needs more memory than there is.
  InputWorkbook(const FileSystem& files, const std::string& full_name, ReadBufferPool& pool,
                std::function<void(const Workbook&)> on_close);
  ~InputWorkbook() override;

  std::string Name() const override;
  std::string Path() const override;
  int WorksheetCount() const override { return static_cast<int>(worksheets_.size()); }
  // Both are error 9 for a sheet that does not exist. Only worksheets count, from 1; letter case is
  // ignored.
  Worksheet& Worksheets(int index) override;
  Worksheet& Worksheets(std::string_view name) override;
  void SaveAs(const std::string& full_name) override;
  void SaveAsNew(const std::string& full_name) override { SaveAs(full_name); }
  void Close() override;

 private:
  class Sheet;

  const SheetCells& Cells(std::size_t sheet, std::unique_ptr<SheetCells>& own);
  [[noreturn]] void RefuseChange() const;

  std::string full_name_;
  std::size_t name_start_;
  ReadBufferPool& pool_;
  std::function<void(const Workbook&)> on_close_;
  std::unique_ptr<ReadBuffers> buffers_;
  std::unique_ptr<WorkbookReader> reader_;
  bool are_buffer_cells_used_ = false;
  std::vector<std::unique_ptr<Sheet>> worksheets_;
};

}  // namespace korvex
