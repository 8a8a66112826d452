// The forms in which BIFF records hold text.
//
// BIFF8, after a count of characters:
//   uint8   flags: bit 0 16-bit characters, bit 2 phonetic data, bit 3 rich text
//   uint16  formatting runs, only of rich text
//   uint32  size of the phonetic data, only where there are such
//   the characters; of 8 bits they are U+0000 to U+00FF
//   4 bytes for each formatting run, the phonetic data
// Where characters go on in a CONTINUE record, a new flags byte says their width; nothing else is
// repeated. Up to BIFF7 a text is bytes in the workbook's code page.
#pragma once

#include <cstdint>

#include "spreadsheet/bytes/code_page.h"
#include "spreadsheet/bytes/text_arena.h"
#include "spreadsheet/xls/record_reader.h"

namespace korvex {

// Appends the BIFF8 text of `count` characters whose flags byte `data` begins with. False when the
// data ends before the characters do; what is there is appended all the same.
bool AppendUnicodeText(ContinuedData& data, std::uint16_t count, TextArena& out);

// Appends a BIFF8 text whose 16-bit count of characters `data` begins with, if it is of the form
// that nearly all shared texts have: a few ASCII characters, and the record goes on behind them.
// False, and nothing is taken, when it is of another.
bool AppendShortText(ContinuedData& data, TextArena& out);

// Appends `count` bytes of text in `code_page`, CONTINUE records included; false as above.
bool AppendByteText(ContinuedData& data, std::size_t count, const CodePage& code_page,
                    TextArena& out);

}  // namespace korvex
