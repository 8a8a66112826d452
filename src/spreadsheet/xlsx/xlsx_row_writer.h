// Writes the rows of a worksheet into the <sheetData> of an .xlsx workbook:
//
//   <row r="7">
//     <c r="B7" s="1"><v>37593.5</v></c>
//     <c r="C7" t="inlineStr"><is><t>a</t></is></c>
//   </row>
//
// Numbers have no type; dates are numbers with a style s. Types: b Boolean, e error, inlineStr
// text. In a text "_x0001_" stands for the UTF-16 unit 0001, which XML cannot hold.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/cells/cell_store.h"
#include "spreadsheet/cells/text_pool.h"

namespace korvex {

// The cell formats of dates, as indices into the styles of the workbook.
struct XlsxDateStyles {
  int date_time = 0;
  int date = 0;
  int time = 0;
};

class XlsxRowWriter {
 public:
  // All must outlive the writer; `file` takes the rows.
  XlsxRowWriter(const CellStore& cells, const TextPool& texts, const XlsxDateStyles& styles,
                std::FILE* file);

  // Returns the number of bytes written. Error 61 when the disk is full, 57 for other failures.
  std::uint64_t Write();

 private:
  struct Part {
    std::size_t column;
    const CellBlock* block;
  };

  void AppendRow(int row, std::size_t row_in_block);
  void AppendCell(std::size_t column, CellKind kind, std::uint64_t bits);
  void AppendText(std::string_view text);
  int StyleOf(CellKind kind, double number) const;
  void Flush();

  const CellStore& cells_;
  const TextPool& texts_;
  const XlsxDateStyles& styles_;
  std::FILE* file_;
  std::vector<std::string> letters_;  // of the columns
  std::vector<Part> parts_;           // of the rows being written, that hold anything
  std::string row_number_;
  std::string text_;  // not written yet
  std::uint64_t written_ = 0;
};

// Appends a text in the form that it has between tags.
void AppendXlsxText(std::string_view text, std::string& out);

}  // namespace korvex
