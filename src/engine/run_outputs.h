// What a run writes: the output workbook, the long form, or both.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/data_sheet.h"
#include "engine/key_table.h"
#include "engine/long_form.h"
#include "engine/output_table.h"
#include "engine/run_record.h"
#include "structure/clsStructure.h"
#include "workbook/spreadsheet.h"

namespace korvex {

// Nothing has its place before Save; without it, what was written is dropped.
class RunOutputs {
 public:
  // Both must outlive the outputs.
  RunOutputs(const RunOptions& options, clsStructure& structure)
      : options_(options), structure_(structure) {}

  // Keeps a file that appears in the place of an output during the run: the user wants to be asked
  // before one is replaced, and there was none to ask about.
  void KeepExistingOutput() { keep_existing_output_ = true; }
  void KeepExistingLongForm() { keep_existing_long_form_ = true; }

  // The workbook, with one sheet of that name (its own for an empty one) and the headers.
  void CreateOutputWorkbook(Application& application, const std::string& full_name,
                            const std::string& sheet_name);
  // To be called when all inputs have been listed, since a temporary file may stand beside them
  // from then on. Error 1004 when the long form would replace one of `inputs`, their full names.
  void BeginLongForm(Application& application, const std::string& sheet_name,
                     const std::vector<std::string>& inputs);
  // Null in a run without an output workbook.
  OutputTable* Table() { return table_ ? &*table_ : nullptr; }

  // Begins the rows of a sheet, of which `file` tells where it lies.
  void BeginSheet(DataSheet& sheet, const std::string& file, int batch);
  // Writes one reading. False when its place is taken by another.
  bool Write(const KeyTable::Found& key, DataSheet& sheet, int row, const CellValue& value);
  // What ends every batch of files.
  void EndBatch();
  // What ends the run, before it is saved.
  void EndRun(Findings& findings);
  // The last step of a run that succeeded. `record` gets what was written.
  void Save(RunRecord& record);

 private:
  void SaveOutputWorkbook(RunRecord& record);
  // Error 58 when a file had the name by then; the output lies beside it under another name.
  void SaveUnlessTaken();
  void SaveLongForm(RunRecord& record);

  const RunOptions& options_;
  clsStructure& structure_;
  std::string output_full_name_;
  Workbook* output_workbook_ = nullptr;
  std::optional<OutputTable> table_;
  std::optional<LongForm> long_form_;
  TakenReadings taken_;  // without an output workbook
  bool keep_existing_output_ = false;
  bool keep_existing_long_form_ = false;
};

}  // namespace korvex
