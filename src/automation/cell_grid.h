// The cells of a range in one value, as `Range.Value` gives and takes them: a SAFEARRAY of VARIANTs
// with the rows as first dimension, column after column in memory, counting from 1. A range of one
// cell has its bare value instead.
#pragma once

#include <string>
#include <vector>

#include "automation/com_value.h"
#include "workbook/cell.h"

namespace korvex {

// Looks at a grid that the application answered with. Error 13 when it is none.
class GridView {
 public:
  // `value` must outlive the view.
  explicit GridView(const ComValue& value);
  ~GridView();
  GridView(const GridView&) = delete;
  GridView& operator=(const GridView&) = delete;

  int Rows() const { return rows_; }
  int Columns() const { return columns_; }
  // Rows and columns count from 0.
  const VARIANT& At(int row, int column) const { return cells_[column * rows_ + row]; }
  // Currency comes rounded to four decimals.
  bool HoldsCurrency() const;

 private:
  SAFEARRAY* array_ = nullptr;  // locked; null for a single value
  const VARIANT* cells_ = nullptr;
  int rows_ = 1;
  int columns_ = 1;
};

// Builds a grid for the application to take.
class GridBuilder {
 public:
  // All cells are empty to begin with. Error 7 when there is no memory.
  GridBuilder(int rows, int columns);
  ~GridBuilder();
  GridBuilder(const GridBuilder&) = delete;
  GridBuilder& operator=(const GridBuilder&) = delete;

  // Rows and columns count from 0; once for each cell.
  void Set(int row, int column, ComValue value);
  // The finished grid. The builder is of no use afterwards.
  ComValue Take();

 private:
  SAFEARRAY* array_;
  VARIANT* cells_ = nullptr;
  int rows_;
};

// `text` is scratch storage, which the view on a text may point into. Error 13 for what is no value
// of a cell.
CellValue CellFrom(const VARIANT& value, std::string& text);
ComValue ComValueOf(const CellValue& cell);

// "A1:J384", or "A1" for a single cell.
std::string RangeAddress(CellAddress first, CellAddress last);

// Several ranges in one address ("A1:A9,C3"), in order. The object model takes an address of 255
// characters at most, so that many ranges come as more than one.
std::vector<std::string> JoinAddresses(const std::vector<std::string>& addresses);

}  // namespace korvex
