// Tells whether the zero or the empty text that is stored as a formula's result can be right.
//
// Programs that do not calculate store such results. But in a template whose cells are still empty
// they are right. Formulas of arithmetic, comparisons and the commonest functions are worked out;
// of any other it only counts whether it looks at a cell that holds something.
#pragma once

#include <cstddef>
#include <span>

#include "spreadsheet/cells/sheet_cells.h"

namespace korvex {

enum class ResultCheck {
  kFalse,    // the formula gives something else
  kTrue,     // it gives zero, or the empty text
  kDoubted,  // it cannot be worked out, but looks at cells that hold something, or at none
  kUnknown,
};

// `tokens` is the formula of a FORMULA record of BIFF5 to BIFF8 whose stored result is zero, or the
// empty text if `is_text`. `cells` are the finished ones of its sheet. References to other sheets
// and shared formulas are not followed. `cells_left` limits how many cells the formulas of a sheet
// may look at, and is counted down: a formula that needs more is not worked out.
ResultCheck CheckEmptyResult(std::span<const std::byte> tokens, bool is_text, bool is_biff8,
                             const SheetCells& cells, std::size_t& cells_left);

}  // namespace korvex
