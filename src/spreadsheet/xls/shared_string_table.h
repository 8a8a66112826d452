// The shared texts of an .xls workbook (BIFF8).
//
// SST: uint32 number of uses, uint32 number of texts, then the texts, each a uint16 length and a
// BIFF8 text (biff_text.h). The table ends where its data ends, whatever the numbers say.
#pragma once

namespace korvex {

struct BiffGlobals;
class SharedStrings;

// Decodes the shared texts of the globals; none when there are none. Writers may state more texts
// than there are. Error 1004 (a predicate) where the numbers show damage, since a text that is lost
// in the middle gives all wells behind it the text of another.
void ReadSharedStrings(const BiffGlobals& globals, SharedStrings& strings);

}  // namespace korvex
