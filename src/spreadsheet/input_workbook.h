// A workbook that is open for reading only.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "spreadsheet/cells/workbook_reader.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class FileSystem;

// Keeps the memory of closed workbooks for the next ones, unless it is unusually much. May be used
// from several threads.
class ReadBufferPool {
 public:
  // Keeps the memory of at most so many workbooks.
  explicit ReadBufferPool(std::size_t most_spare = 1) : most_spare_(most_spare) {}

  // New buffers while the kept ones are in use.
  std::unique_ptr<ReadBuffers> Take();
  void GiveBack(std::unique_ptr<ReadBuffers> buffers);

 private:
  const std::size_t most_spare_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<ReadBuffers>> spare_;
};

// The cells of a sheet are read when they are first asked for. Every change and SaveAs is error
// 1004, and so is a cell outside of the rows and columns of the format. Columns up to
// kLastHeaderColumn are an exception, because the program looks for headers there: they are Empty.
class InputWorkbook : public Workbook {
 public:
  // Opens `full_name`. The pool must outlive the workbook; the file system is needed only during
  // this call. Errors: those of the file
  // system; 1004 with path and cause for a file that is no workbook, damaged or protected; 7 for
  // one that needs more memory than there is. Reading ends soon after `given_up` is set.
  InputWorkbook(const FileSystem& files, const std::string& full_name, ReadBufferPool& pool,
                std::shared_ptr<const std::atomic<bool>> given_up = nullptr);
  ~InputWorkbook() override;

  // Close() calls it; it may destroy the workbook.
  void OnClose(std::function<void(const Workbook&)> on_close) { on_close_ = std::move(on_close); }
  // Reads the cells of a worksheet before somebody asks for them. What fails is raised when they
  // are asked for.
  void Prepare(const std::string& sheet);
  const std::string& FullName() const { return full_name_; }
  // Whether the file has the same bytes as when it was opened.
  bool IsStill(const FileSystem& files) const;
  // Whether it takes no more memory than is kept for the next workbook.
  bool IsSmall() const;

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
