// A worksheet of the installed spreadsheet application.
//
// The engine works cell by cell, and a call into another process costs milliseconds. So the cells
// are kept here: those of an input are fetched together at the first access, those of an output are
// written together before it is saved.
#pragma once

#include <memory>
#include <string>

#include "automation/cell_table.h"
#include "automation/dispatch.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class InstalledWorkbook;

class InstalledSheet : public Worksheet {
 public:
  // `workbook` owns the sheet; `name` is what the application calls it now.
  InstalledSheet(InstalledWorkbook& workbook, Dispatch sheet, std::string name);

  std::string Name() const override { return name_; }
  void SetName(const std::string& name) override;
  int Index() const override;
  void Activate() override;
  void Delete() override;

  // Brings the application's cells up to date.
  virtual void Upload() {}

 protected:
  // The application's own sheet, and the workbook here that holds this one.
  const Dispatch& Object() const { return sheet_; }
  const InstalledWorkbook& Owner() const { return workbook_; }

 private:
  InstalledWorkbook& workbook_;
  Dispatch sheet_;
  std::string name_;
};

// A sheet of a workbook that was opened, as it was at the first access. Changing a cell is error
// 1004. A cell outside of the used range is Empty.
class InstalledInputSheet : public InstalledSheet {
 public:
  using InstalledSheet::InstalledSheet;

  CellValue Value(int row, int column) const override;
  void SetValue(int row, int column, const CellValue& value) override;
  CellAddress LastCell() const override;
  void CheckRoom(CellAddress place) const override;
  int CountA(int row) const override;
  void DeleteColumn(int column) override;

 private:
  // All cells, fetched when they are first needed. Error 1004 when there are too many to hold.
  const CellTable& Cells() const;
  // Puts the cells from `first` to `last` into `cells`, by one call where their values let it.
  void Fetch(CellAddress first, CellAddress last, CellTable& cells) const;
  void FetchHalves(CellAddress first, CellAddress last, CellTable& cells) const;
  // The bottom right corner of what the application takes for used, formats included.
  CellAddress FindLastCell() const;
  [[noreturn]] void RefuseChange() const;

  mutable CellAddress last_cell_{0, 0};  // row 0 until it is known
  mutable std::unique_ptr<CellTable> cells_;
};

// A sheet of a new workbook. A cell that the format of the workbook cannot hold is refused at once,
// with error 1004.
class InstalledOutputSheet : public InstalledSheet {
 public:
  using InstalledSheet::InstalledSheet;

  CellValue Value(int row, int column) const override;
  void SetValue(int row, int column, const CellValue& value) override;
  CellAddress LastCell() const override { return cells_.LastCell(); }
  void CheckRoom(CellAddress place) const override;
  int CountA(int row) const override;
  void DeleteColumn(int column) override;

  void Upload() override;

 private:
  // The steps of an upload, in this order.
  void FormatTexts() const;
  void WriteBlocks() const;
  void WriteLongTexts() const;

  CellTable cells_;
  // Since the last upload.
  bool has_changed_ = false;
  // The application holds cells of this sheet, which the next upload clears first.
  bool was_uploaded_ = false;
};

}  // namespace korvex
