// The spreadsheet application behind a conversion: the members of its object model that the
// program uses. The embedded application and the one driven by automation implement it.
//
// Sheets, rows and columns are one-based. Texts are UTF-8. Whatever the application refuses is
// error 1004 with the cause in its description; a look-up by a name that does not exist is error 9.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cell.h"

namespace korvex {

class Worksheet {
 public:
  virtual ~Worksheet() = default;

  virtual std::string Name() const = 0;
  // 1 to 31 characters without \ / ? * [ ] : or the name is refused.
  virtual void SetName(const std::string& name) = 0;
  // Position among all sheets of the workbook, charts and macro sheets counted.
  virtual int Index() const = 0;
  virtual void Activate() = 0;
  // Takes the sheet out of its workbook; references to it are invalid afterwards.
  virtual void Delete() = 0;

  // A cell that was never filled is Empty, anywhere within the sheet. Row or column 0 is refused.
  virtual CellValue Value(int row, int column) const = 0;
  // The values of several cells of a row at once; `values` has an element for each column. False
  // when one of them may not be read: Value says which, and why.
  virtual bool ReadRow(int row, std::span<const int> columns, std::span<CellValue> values) const {
    for (std::size_t i = 0; i < columns.size(); ++i) values[i] = Value(row, columns[i]);
    return true;
  }
  // Text is stored as that text, whatever it looks like.
  virtual void SetValue(int row, int column, const CellValue& value) = 0;
  // The bottom right corner of everything used, formatted blanks included (special cells type 11);
  // row 1, column 1 for an empty sheet.
  virtual CellAddress LastCell() const = 0;
  // Refuses a place beyond the last row or column that the sheet can have.
  virtual void CheckRoom(CellAddress place) const = 0;
  // How many cells of a row are not empty (CountA of the entire row).
  virtual int CountA(int row) const = 0;
  // Deletes a whole column; the columns right of it move left (EntireColumn.Delete).
  virtual void DeleteColumn(int column) = 0;
};

class Workbook {
 public:
  virtual ~Workbook() = default;

  virtual std::string Name() const = 0;  // file name with extension
  virtual std::string Path() const = 0;  // folder without trailing separator
  virtual int WorksheetCount() const = 0;
  virtual Worksheet& Worksheets(int index) = 0;              // among the worksheets only
  virtual Worksheet& Worksheets(std::string_view name) = 0;  // letter case is ignored
  // Replaces an existing file without asking; the former file stays as it is when saving fails.
  // The ending of the name decides about the format.
  virtual void SaveAs(const std::string& full_name) = 0;
  // The same for a name that nothing has: error 58 when there is a file of that name.
  virtual void SaveAsNew(const std::string& full_name) = 0;
  // Closes without saving. References to the workbook and its worksheets are invalid afterwards.
  virtual void Close() = 0;
};

// Workbooks that are encrypted with this password open without asking for one.
inline constexpr char kDefaultPassword[] = "VelvetSweatshop";

struct OpenOptions {
  bool read_only = false;
  bool ignore_read_only_recommended = false;
  bool add_to_recent_files = true;
};

// Owns its workbooks.
class Application {
 public:
  virtual ~Application() = default;

  virtual void SetVisible(bool visible) = 0;
  virtual void SetScreenUpdating(bool update) = 0;
  virtual void SetDisplayAlerts(bool display) = 0;
  // A new workbook that is to be saved under that name: its sheets refuse at once what the format
  // of the name cannot hold. A name that no workbook can be saved under is refused.
  virtual Workbook& AddWorkbook(const std::string& full_name) = 0;
  virtual Workbook& OpenWorkbook(const std::string& full_name, const OpenOptions& options) = 0;
  // These workbooks will be opened next, in this order, and of each the worksheet of that name will
  // be read. An application refuses those that it cannot open by their names; else it may do
  // nothing.
  virtual void Expect(const std::vector<std::string>& full_names, const std::string& sheet) {
    static_cast<void>(full_names);
    static_cast<void>(sheet);
  }
  virtual int WorkbookCount() const = 0;
  virtual Workbook& Workbooks(int index) = 0;
  virtual void Quit() = 0;
};

// Starts applications.
class SpreadsheetProgram {
 public:
  virtual ~SpreadsheetProgram() = default;

  // Error 429 when the application cannot be started.
  virtual std::unique_ptr<Application> CreateApplication() = 0;
  // Error 1004 when no workbook can be saved under that name, whatever is in it.
  virtual void CheckOutputName(const std::string& full_name) const = 0;
};

}  // namespace korvex
