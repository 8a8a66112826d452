// The shared texts of an .xls workbook (BIFF8).
//
//   SST  0 uint32 cells that use a text, 4 uint32 texts, 8 the texts: uint16 characters, BIFF8 text
//        (biff_text.h)
// The table ends where its data ends, whatever the numbers say.
#pragma once

namespace korvex {

struct BiffGlobals;
class SharedStrings;

// Replaces `strings` by the shared texts of the globals. Writers may state more texts than there
// are. Refuses a table whose numbers show damage: a text that is lost in the middle would give
// every well behind it the text of another.
void ReadSharedStrings(const BiffGlobals& globals, SharedStrings& strings);

}  // namespace korvex
