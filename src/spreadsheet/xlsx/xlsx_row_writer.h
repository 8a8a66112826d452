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
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/cells/cell_store.h"
#include "spreadsheet/cells/text_pool.h"

namespace korvex {

// The formats of cells, as indices into the styles of the workbook.
enum class XlsxFormat { kGeneral, kDateTime, kDate, kTime };

class XlsxRowWriter {
 public:
  // Takes a block of rows and leaves an empty text for the next one.
  using Sink = std::function<void(std::string&)>;

  // The cells and the texts must outlive the writer.
  XlsxRowWriter(const CellStore& cells, const TextPool& texts, Sink take);

  // Errors of the sink pass through.
  void Write();

 private:
  struct Part {
    std::size_t column;
    const CellBlock* block;
  };

  void AppendRow(int row, std::size_t row_in_block);
  void AppendCell(std::size_t column, CellKind kind, std::uint64_t bits);
  void AppendText(std::string_view text);

  const CellStore& cells_;
  const TextPool& texts_;
  const Sink take_;
  std::vector<std::string> letters_;  // of the columns
  std::vector<Part> parts_;           // of the rows being written, that hold anything
  std::string row_number_;
  std::string text_;  // of the block
};

}  // namespace korvex
