#include "spreadsheet/xls/biff8_writer.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "spreadsheet/bytes/byte_writer.h"
#include "spreadsheet/bytes/unicode.h"
#include "spreadsheet/cells/cell_store.h"
#include "spreadsheet/xls/biff_records.h"

namespace korvex {

namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;

constexpr U16 kUtf16CodePage = 1200;
constexpr U16 kUnitedStates = 1;
// Number formats. All but the last are built in.
constexpr U16 kGeneralNumber = 0;
constexpr U16 kDateNumber = 14;
constexpr U16 kTimeNumber = 21;
constexpr U16 kDateTimeNumber = 22;
constexpr U16 kFirstCustomNumber = 164;

template <class Out>
void PutText(Out& out, std::string_view ascii) {
  out.PutBytes(std::as_bytes(std::span(ascii)));
}

// Who wrote the workbook; some readers refuse one that does not say.
//   INTERFACEHDR  0 uint16 code page
//   MMS           0 uint16 menus added and deleted
//   INTERFACEEND  nothing
//   WRITEACCESS   0 uint16 characters, 2 uint8 flags (0: 8-bit), 3 characters; padded with
//                 blanks to 112 bytes
template <class Out>
void WriteProgram(Out& out) {
  constexpr std::string_view kWriter = "KORVEX";
  constexpr std::size_t kLength = 112;
  out.PutRecord(biff::kInterfaceHdr, kUtf16CodePage);
  out.PutRecord(biff::kMms, U16{0});
  out.PutRecord(biff::kInterfaceEnd);
  out.Put(biff::kWriteAccess, static_cast<U16>(kLength));
  out.Put(static_cast<U16>(kWriter.size()), U8{0});
  PutText(out, kWriter);
  out.PutRepeated(std::byte{' '}, kLength - 3 - kWriter.size());
}

// At least four fonts, because an index of 4 stands for no font in the format.
//   FONT  0  uint16  height in twips         10  uint8  underline
//         2  uint16  bold, italic …          11  uint8  family
//         4  uint16  colour                  12  uint8  character set
//         6  uint16  weight                  13  uint8  0
//         8  uint16  super- or subscript     14  name: uint8 characters, uint8 flags, characters
template <class Out>
void WriteFonts(Out& out) {
  constexpr std::string_view kName = "Arial";
  constexpr U16 kHeight = 200;  // twips
  constexpr U16 kAutomaticColor = 0x7FFF;
  constexpr U16 kNormalWeight = 400;
  for (int font = 0; font < 4; ++font) {
    out.Put(biff::kFont, static_cast<U16>(16 + kName.size()));
    out.Put(kHeight, U16{0}, kAutomaticColor, kNormalWeight, U16{0}, U32{0});
    out.Put(static_cast<U8>(kName.size()), U8{0});
    PutText(out, kName);
  }
}

//   FORMAT  0 uint16 id, 2 text: uint16 characters, uint8 flags, characters
// The built-in formats need no record; the first id of a format of one's own is 164.
template <class Out>
void WriteNumberFormats(Out& out) {
  constexpr std::string_view kCode = "General";
  out.Put(biff::kFormat, static_cast<U16>(5 + kCode.size()));
  out.Put(kFirstCustomNumber, static_cast<U16>(kCode.size()), U8{0});
  PutText(out, kCode);
}

// XF, the format of cells or of a style:
//   0  uint16  font                                 7  uint8   rotation
//   2  uint16  number format                        8  uint8   indentation
//   4  uint16  kind: 0xFFF5 a style, 1 a cell       9  uint8   `used`: what differs from the parent
//   6  uint8   alignment                           10  10 bytes of borders, pattern and colours
template <class Out>
void WriteXf(Out& out, U16 number_format, U16 kind, U8 used) {
  constexpr U8 kBottomAligned = 0x20;
  constexpr U16 kAutomaticPattern = 0x20C0;
  out.PutRecord(biff::kXf, U16{0}, number_format, kind, kBottomAligned, U8{0}, U8{0}, used, U32{0},
                U32{0}, kAutomaticPattern);
}

// The 15 styles that readers take for granted, then the cell formats in the order of CellFormat.
template <class Out>
void WriteXfs(Out& out) {
  constexpr U16 kStyle = 0xFFF5;
  constexpr U16 kCell = 1;
  constexpr U8 kNumberUsed = 0x04;
  constexpr int kOutlineStyles = 14;
  WriteXf(out, kGeneralNumber, kStyle, 0);
  for (int i = 0; i < kOutlineStyles; ++i) WriteXf(out, kGeneralNumber, kStyle, 0xF4);
  WriteXf(out, kGeneralNumber, kCell, 0);
  WriteXf(out, kDateTimeNumber, kCell, kNumberUsed);
  WriteXf(out, kDateNumber, kCell, kNumberUsed);
  WriteXf(out, kTimeNumber, kCell, kNumberUsed);
  // STYLE 0 uint16 XF and bit 15 for a built-in style, 2 uint8 its number, 3 uint8 level: XF 0 is
  // the built-in style "Normal".
  out.PutRecord(biff::kStyle, U16{0x8000}, U8{0}, U8{0xFF});
}

template <class Out>
void WriteWindow(const std::vector<SheetContent>& sheets, Out& out) {
  const auto active = std::find_if(sheets.begin(), sheets.end(),
                                   [](const SheetContent& sheet) { return sheet.selected; });
  const auto index = active == sheets.end() ? 0 : active - sheets.begin();
  // WINDOW1  0 uint16 left, 2 top, 4 width, 6 height in twips, 8 options (scroll bars and tabs),
  //          10 active sheet, 12 first tab shown, 14 sheets selected, 16 share of the tabs in
  //          1/1000
  out.PutRecord(biff::kWindow1, U16{360}, U16{270}, U16{14940}, U16{9150}, U16{0x38},
                static_cast<U16>(index), U16{0}, U16{1}, U16{600});
}

template <class Out>
void WriteSettings(Out& out) {
  out.PutRecord(biff::kBackup, U16{0});
  out.PutRecord(biff::kHideObj, U16{0});
  out.PutRecord(biff::kDateMode, U16{0});  // 1900
  out.PutRecord(biff::kPrecision, U16{1});
  out.PutRecord(biff::kBookBool, U16{0});
}

}  // namespace

Biff8Writer::Biff8Writer(const TextPool& texts, std::vector<SheetContent> sheets)
    : strings_(texts), sheets_(std::move(sheets)) {
  // Everything is written twice: this pass only counts bytes. The globals say where each sheet
  // begins, and the container how long the stream is, before either is written. The sheets come
  // first because they number the texts that the globals hold.
  for (const SheetContent& sheet : sheets_) {
    ByteCounter counter;
    WriteSheet(sheet, strings_, counter);
    sheet_sizes_.push_back(counter.Position());
    text_cells_ += sheet.cells->Count(CellKind::kText);
    stream_size_ += counter.Position();
  }
  ByteCounter counter;
  WriteGlobals(counter);
  globals_size_ = counter.Position();
  stream_size_ += globals_size_;
}

void Biff8Writer::Write(ByteWriter& out) {
  WriteGlobals(out);
  for (const SheetContent& sheet : sheets_) WriteSheet(sheet, strings_, out);
}

template <class Out>
void Biff8Writer::WriteGlobals(Out& out) {
  const std::uint64_t stream_start = out.Position();
  // BOF  0 uint16 version, 2 uint16 kind of sub-stream, 4 uint16 build, 6 uint16 year,
  //      8 uint32 history, 12 uint32 lowest version that can read it
  out.PutRecord(biff::kBof, biff::kVersionBiff8, biff::kGlobalsSubstream, U16{0x0DBB}, U16{0x07CC},
                U32{0}, U32{6});
  WriteProgram(out);
  out.PutRecord(biff::kCodePage, kUtf16CodePage);
  out.PutRecord(biff::kDsf, U16{0});
  out.Put(biff::kTabId, static_cast<U16>(sheets_.size() * 2));
  for (std::size_t i = 0; i < sheets_.size(); ++i) out.Put(static_cast<U16>(i + 1));
  WriteWindow(sheets_, out);
  WriteSettings(out);
  WriteFonts(out);
  WriteNumberFormats(out);
  WriteXfs(out);
  out.PutRecord(biff::kUseSelFs, U16{0});
  WriteBoundSheets(out);
  out.PutRecord(biff::kCountry, kUnitedStates, kUnitedStates);
  strings_.Write(out, stream_start, text_cells_);
  out.PutRecord(biff::kEof);
}

// BOUNDSHEET  0 uint32 offset of the sheet's BOF in the stream, 4 uint8 state, 5 uint8 kind,
//             6 name: uint8 characters, uint8 flags (1: 16-bit), characters
template <class Out>
void Biff8Writer::WriteBoundSheets(Out& out) const {
  std::uint64_t offset = globals_size_;
  std::u16string name;
  for (std::size_t i = 0; i < sheets_.size(); ++i) {
    ToUtf16(sheets_[i].name, name);
    out.Put(biff::kBoundSheet, static_cast<U16>(8 + name.size() * 2));
    out.Put(static_cast<U32>(offset), U16{0});  // a visible worksheet
    out.Put(static_cast<U8>(name.size()), U8{1});
    for (const char16_t unit : name) out.Put(static_cast<U16>(unit));
    offset += sheet_sizes_[i];
  }
}

}  // namespace korvex
