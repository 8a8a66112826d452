#include "spreadsheet/xls/record_forms.h"

#include <algorithm>
#include <iterator>

#include "spreadsheet/xls/biff_records.h"

namespace korvex {
namespace {

constexpr std::uint16_t kAny = biff::kMaxRecordData;

// The table of all records of a worksheet: a range of record numbers, and the fewest and the most
// bytes of data that each of them has in BIFF5 to BIFF8. It is ordered by number. The numbers are
// written out here, since most of these records have no other use in this program.
struct Form {
  std::uint16_t first;
  std::uint16_t last;
  std::uint16_t shortest;
  std::uint16_t longest;
};

constexpr Form kForms[] = {
    {0x0006, 0x0006, 22, kAny},  // FORMULA
    {0x000A, 0x000A, 0, 0},      // EOF
    {0x000C, 0x000F, 2, 2},      // CALCCOUNT to REFMODE
    {0x0010, 0x0010, 8, 8},      // DELTA
    {0x0011, 0x0013, 2, 2},      // ITERATION to PASSWORD
    {0x0014, 0x0015, 0, kAny},   // HEADER, FOOTER
    {0x0016, 0x0016, 2, 2},      // EXTERNCOUNT
    {0x0017, 0x0018, 2, kAny},   // EXTERNSHEET, NAME
    {0x0019, 0x0019, 2, 2},      // WINDOWPROTECT
    {0x001A, 0x001D, 2, kAny},   // page breaks, NOTE, SELECTION
    {0x0022, 0x0023, 0, kAny},   // DATEMODE, EXTERNNAME
    {0x0026, 0x0029, 8, 8},      // margins
    {0x002A, 0x002B, 2, 2},      // PRINTHEADERS, PRINTGRIDLINES
    {0x003C, 0x003C, 0, kAny},   // CONTINUE
    {0x003D, 0x003D, 18, 18},    // WINDOW1
    {0x0041, 0x0041, 9, 10},     // PANE
    {0x004D, 0x0052, 0, kAny},   // PLS, data consolidation
    {0x0055, 0x0055, 2, 2},      // DEFCOLWIDTH
    {0x0059, 0x005A, 0, kAny},   // XCT, CRN
    {0x005D, 0x005D, 0, kAny},   // OBJ
    {0x005F, 0x005F, 2, 2},      // SAVERECALC
    {0x0060, 0x0060, 0, kAny},   // TEMPLATE
    {0x0063, 0x0063, 2, 2},      // OBJPROTECT
    {0x007D, 0x007D, 10, 12},    // COLINFO
    {0x007F, 0x007F, 0, kAny},   // IMDATA
    {0x0080, 0x0080, 8, 8},      // GUTS
    {0x0081, 0x0084, 2, 2},      // WSBOOL to VCENTER
    {0x008C, 0x008C, 4, 4},      // COUNTRY
    {0x0090, 0x0094, 0, kAny},   // SORT, LHRECORD
    {0x0099, 0x0099, 2, 2},      // STANDARDWIDTH
    {0x009B, 0x009E, 0, kAny},   // filters
    {0x00A0, 0x00A0, 4, 4},      // SCL
    {0x00A1, 0x00A1, 34, 34},    // SETUP
    {0x00A9, 0x00B8, 0, kAny},   // scenarios, pivot tables, OBJPROJ
    {0x00BD, 0x00BD, 12, kAny},  // MULRK
    {0x00BE, 0x00BE, 8, kAny},   // MULBLANK
    {0x00C5, 0x00CD, 0, kAny},   // pivot tables
    {0x00D0, 0x00D0, 0, kAny},   // SXDBEX
    {0x00D6, 0x00D6, 8, kAny},   // RSTRING
    {0x00D7, 0x00D7, 4, 68},     // DBCELL, of up to 32 rows
    {0x00DC, 0x00DC, 0, kAny},   // SXEX
    {0x00DD, 0x00DD, 2, 2},      // SCENPROTECT
    {0x00E3, 0x00E5, 0, kAny},   // pivot tables, MERGECELLS
    {0x00E9, 0x00F9, 0, kAny},   // pictures, PHONETICPR, pivot tables
    {0x00FD, 0x00FD, 10, 10},    // LABELSST
    {0x0100, 0x0103, 0, kAny},   // pivot tables
    {0x0122, 0x0122, 0, kAny},   // SXFDBTYPE
    {0x015F, 0x0160, 0, kAny},   // LABELRANGES, USESELFS
    {0x0192, 0x019C, 0, kAny},   // custom views
    {0x01A9, 0x01C2, 0, kAny},   // custom views, conditional formats, links, text boxes
    {0x0200, 0x0200, 10, 14},    // DIMENSIONS
    {0x0201, 0x0201, 6, 6},      // BLANK
    {0x0203, 0x0203, 14, 14},    // NUMBER
    {0x0204, 0x0204, 8, kAny},   // LABEL
    {0x0205, 0x0205, 8, 8},      // BOOLERR
    {0x0206, 0x0206, 16, kAny},  // FORMULA
    {0x0207, 0x0207, 2, kAny},   // STRING
    {0x0208, 0x0208, 16, 16},    // ROW
    {0x020B, 0x020B, 12, kAny},  // INDEX
    {0x0221, 0x0221, 8, kAny},   // ARRAY
    {0x0223, 0x0223, 0, kAny},   // EXTERNNAME
    {0x0225, 0x0225, 4, 4},      // DEFAULTROWHEIGHT
    {0x0236, 0x0236, 16, 16},    // TABLE
    {0x023E, 0x023E, 10, 18},    // WINDOW2
    {0x027E, 0x027E, 10, 10},    // RK
    {0x0406, 0x0406, 16, kAny},  // FORMULA
    {0x04BC, 0x04BC, 8, kAny},   // SHRFMLA
    {0x0800, 0x08FF, 0, kAny},   // later additions, BOF
};

// Null for a number that no worksheet holds. The first entry that does not end before the number is
// the only one that can hold it.
const Form* FindForm(std::uint16_t number) {
  const Form* const form =
      std::lower_bound(std::begin(kForms), std::end(kForms), number,
                       [](const Form& entry, std::uint16_t wanted) { return entry.last < wanted; });
  return form != std::end(kForms) && form->first <= number ? form : nullptr;
}

}  // namespace

bool IsTooLong(std::uint16_t number, std::size_t length) {
  if (length > biff::kMaxRecordData) return true;
  const Form* const form = FindForm(number);
  return form != nullptr && length > form->longest + kMostSurplus;
}

bool IsKnown(std::uint16_t number) {
  return FindForm(number) != nullptr;
}

bool IsSheetRecord(std::uint16_t number, std::size_t length) {
  const Form* const form = FindForm(number);
  return form != nullptr && length >= form->shortest && !IsTooLong(number, length);
}

// The records after a formula hold its text, or the formula that its cell shares with others.
bool BelongsBetweenCells(std::uint16_t number) {
  switch (number) {
    case biff::kRow:
    case biff::kDbCell:
    case biff::kString:
    case biff::kShrFmla:
    case biff::kShrFmlaBiff5:
    case biff::kArray:
    case biff::kTable:
    case biff::kContinue:
      return true;
    default:
      return false;
  }
}

}  // namespace korvex
