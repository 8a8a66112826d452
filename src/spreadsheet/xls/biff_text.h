// The forms in which BIFF records hold text.
//
// BIFF8: flag byte (bit 0 = 16-bit characters, bit 2 = phonetic data, bit 3 = rich text), then
// uint16 count of formatting runs if rich, uint32 size of the phonetic data if phonetic, the
// characters, 4 bytes a run, the phonetic data. Characters of 8 bits are U+0000 to U+00FF. Where
// characters go on in a CONTINUE record a new flag byte says their width; nothing else is repeated.
// Up to BIFF7: bytes in the workbook's code page.
#pragma once

#include <cstdint>

#include "spreadsheet/bytes/code_page.h"
#include "spreadsheet/bytes/text_arena.h"
#include "spreadsheet/xls/record_reader.h"

namespace korvex {

// Appends the BIFF8 text at `data`, from its flag byte on, of `count` characters. False when the
// data ends before the characters do; what was there is appended all the same.
bool AppendUnicodeText(ContinuedData& data, std::uint16_t count, TextArena& out);

// Appends `count` bytes of text in `code_page`, with what CONTINUE records hold of them; false as
// above.
bool AppendByteText(ContinuedData& data, std::size_t count, const CodePage& code_page,
                    TextArena& out);

}  // namespace korvex
