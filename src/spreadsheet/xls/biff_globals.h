// What the globals of a workbook stream (BIFF5 to BIFF8) say about its sheets and cells.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "spreadsheet/bytes/code_page.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/cells/workbook_reader.h"

namespace korvex {

// What workbooks of BIFF2 to BIFF4 are refused as.
inline constexpr char kOldFormat[] = "a spreadsheet in a format older than that of Excel 5";

struct BiffGlobals {
  bool is_biff8 = true;
  bool uses_1904 = false;
  CodePage code_page;  // of BIFF5 texts
  std::vector<SheetInfo> sheets;
  std::vector<std::uint32_t> sheet_offsets;  // of their BOF in the stream
  std::vector<DateForm> date_forms;          // by XF index
  // The SST record: its data and the rest of the stream. Empty when there is none.
  std::span<const std::byte> strings;
  std::size_t strings_length = 0;
  // The data of the EXTSST record, which says where every so many of the shared texts begin.
  std::span<const std::byte> string_index;
  bool has_end = false;          // the closing EOF was there
  bool is_single_sheet = false;  // there are no globals: a worksheet begins the stream
};

// Reads these records; more bytes than listed are ignored:
//   BOF         0 uint16 version, 2 uint16 kind of sub-stream
//   CODEPAGE    0 uint16 number
//   DATEMODE    0 uint16 1 for the 1904 date system
//   FORMAT      0 uint16 id, 2 text with a 16-bit length (BIFF5: 8-bit)
//   XF          0 uint16 font, 2 uint16 id of the number format
//   SST         0 uint32 cells that use a text, 4 uint32 texts, 8 the texts: uint16 characters,
//               BIFF8 text (biff_text.h)
//   EXTSST      0 uint16 texts in a bucket, 2 for each bucket: uint32 offset in the stream, uint16
//               offset in the record, uint16 of no meaning
//   BOUNDSHEET  0 uint32 offset of the sheet's BOF, 5 uint8 kind, 6 name with an
//               8-bit length
// `is_book` tells the version when BOF does not: whether the stream is called Book, or there is no
// compound file around it. A stream that begins with a worksheet is a workbook of that one sheet.
// The stream must be decrypted (biff_decryption.h). Refuses an older version, a stream without BOF,
// and records that show damage.
BiffGlobals ReadBiffGlobals(std::span<const std::byte> stream, bool is_book);

// Replaces `strings` by the shared texts of the globals. The table ends where its data ends:
// writers may state more texts than there are. Refuses a table whose numbers show damage: a text
// that is lost in the middle would give every well after it the text of another.
void ReadSharedStrings(const BiffGlobals& globals, SharedStrings& strings);

}  // namespace korvex
