// Tells whether the zero or the empty text that stands as a formula's result can be true.
//
// Programs that do not calculate store such results, but a template whose cells are still empty has
// true ones. A formula is worked out as far as arithmetic, comparisons and the commonest functions
// go; of any other it counts whether it looks at a cell that holds something.
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

// `tokens` is the formula of a FORMULA record of BIFF5 to BIFF8, and the result that stands there
// is the empty text or zero; `cells` are the finished ones of its sheet. References to other sheets
// and shared formulas are not followed. The cells that it looks at are taken from `cells_left`: a
// formula that needs more is not worked out.
ResultCheck CheckEmptyResult(std::span<const std::byte> tokens, bool is_text, bool is_biff8,
                             const SheetCells& cells, std::size_t& cells_left);

}  // namespace korvex
