#include "structure/basFuncs_workbooks.h"
#include "errors/trap.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "platform/error.h"
#include "platform/shown_text.h"
#include "workbook/cell_text.h"

namespace korvex {
Worksheet& GetDataSheet(Workbook& workbook) {
  return workbook.Worksheets(kDataSheetName);
}

void CheckSheetExists(Workbook& workbook) {
  Trap(
      "basFuncs.CheckSheetExists", [&] { GetDataSheet(workbook).Activate(); },
      [&](const TrappedError& error) {
        if (error.Number() != error_number::kSubscript) {
          error.Report();
          return;
        }
        TellAndFail(std::string("No \"") + kDataSheetName + "\" sheet found in file " +
                    ShortenPath(workbook.Path(), true) + Shown(workbook.Name()));
      });
}

// Rows that only have formats count in the last cell, but hold nothing.
int GetLastRow(const Worksheet& sheet) {
  int row = sheet.LastCell().row;
  while (row > 1 && sheet.CountA(row) == 0) --row;
  return row;
}

// From below, since notes of any form may stand above the header row.
int GetHeaderRow(const Worksheet& sheet) {
  int row = GetLastRow(sheet);
  while (row >= 1 && IsNumeric(sheet.Value(row, 1))) --row;
  return row;
}

int GetHeaderRow(Workbook& workbook) {
  CheckSheetExists(workbook);
  return GetHeaderRow(GetDataSheet(workbook));
}

Worksheet& KeepOneSheet(Workbook& workbook, const std::string& name) {
  while (workbook.WorksheetCount() >= 2) workbook.Worksheets(1).Delete();
  Worksheet& sheet = workbook.Worksheets(1);
  if (!name.empty()) sheet.SetName(name);
  return sheet;
}

void QuitExcel(std::unique_ptr<Application>& application) {
  if (!application) return;
  // Each step is tried by itself: whatever fails in an application that has died, it is released.
  int count = 0;
  Attempt([&] { count = application->WorkbookCount(); });
  // From the last one on, since closing a workbook renumbers those behind it.
  for (int index = count; index >= 1; --index)
    Attempt([&] { application->Workbooks(index).Close(); });
  Attempt([&] { application->Quit(); });
  application.reset();
}

}  // namespace korvex
