// Numbers of the BIFF records that this program reads or writes.
//
// A workbook stream is a sequence of records: uint16 number, uint16 length of the data, data; all
// values little-endian. A sub-stream (globals, sheet, chart) runs from a BOF to its EOF. In BIFF8 a
// record holds at most 8,224 bytes of data and goes on in CONTINUE records; up to BIFF7 the limit
// is 2,080. Rows, columns and XF indices are zero-based.
#pragma once

#include <cstddef>
#include <cstdint>

#include "workbook/sheet_rules.h"

namespace korvex::biff {

inline constexpr std::size_t kRecordHeaderSize = 4;
inline constexpr std::size_t kMaxRecordData = 8224;  // BIFF8
inline constexpr int kMaxRows = kXlsRows;
inline constexpr int kMaxColumns = kXlsColumns;

// Named as in descriptions of the format. Numbers of BIFF2 to BIFF4 are there to be recognised.
enum Record : std::uint16_t {
  kFormula = 0x0006,
  kBofBiff2 = 0x0009,
  kEof = 0x000A,
  kCalcCount = 0x000C,
  kCalcMode = 0x000D,
  kPrecision = 0x000E,
  kRefMode = 0x000F,
  kDelta = 0x0010,
  kIteration = 0x0011,
  kHeader = 0x0014,
  kFooter = 0x0015,
  kSelection = 0x001D,
  kDateMode = 0x0022,
  kFilePass = 0x002F,
  kFont = 0x0031,
  kContinue = 0x003C,
  kWindow1 = 0x003D,
  kBackup = 0x0040,
  kPane = 0x0041,
  kCodePage = 0x0042,
  kDefaultColumnWidth = 0x0055,
  kWriteAccess = 0x005C,
  kSaveRecalc = 0x005F,
  kColInfo = 0x007D,
  kGuts = 0x0080,  // the room of outline symbols
  kWsBool = 0x0081,
  kGridSet = 0x0082,
  kHCenter = 0x0083,
  kVCenter = 0x0084,
  kBoundSheet = 0x0085,
  kCountry = 0x008C,
  kHideObj = 0x008D,
  kSetup = 0x00A1,
  kShrFmla = 0x00BC,
  kMulRk = 0x00BD,
  kMulBlank = 0x00BE,
  kMms = 0x00C1,  // items added to menus
  kRString = 0x00D6,
  kDbCell = 0x00D7,  // after a block of rows, where they begin
  kBookBool = 0x00DA,
  kXf = 0x00E0,
  kInterfaceHdr = 0x00E1,
  kInterfaceEnd = 0x00E2,
  kSst = 0x00FC,
  kLabelSst = 0x00FD,
  kExtSst = 0x00FF,
  kRrdHead = 0x0138,   // of a log of changes, as is kRrdInfo
  kTabId = 0x013D,     // numbers of the sheets
  kUseSelFs = 0x0160,  // formulas in plain language
  kDsf = 0x0161,       // whether there is a second stream, for Excel 5
  kUsrExcl = 0x0194,   // locks of shared workbooks, as is kFileLock
  kFileLock = 0x0195,
  kRrdInfo = 0x0196,
  kDimensions = 0x0200,
  kBlank = 0x0201,
  kNumber = 0x0203,
  kLabel = 0x0204,
  kBoolErr = 0x0205,
  kFormulaBiff3 = 0x0206,
  kString = 0x0207,
  kRow = 0x0208,
  kBofBiff3 = 0x0209,
  kArray = 0x0221,
  kDefaultRowHeight = 0x0225,
  kTable = 0x0236,
  kWindow2 = 0x023E,
  kRk = 0x027E,
  kStyle = 0x0293,
  kFormulaBiff4 = 0x0406,
  kBofBiff4 = 0x0409,
  kFormat = 0x041E,
  kShrFmlaBiff5 = 0x04BC,
  kBof = 0x0809,
};

// BOF: uint16 version, uint16 kind of sub-stream, then build data.
inline constexpr std::uint16_t kVersionBiff8 = 0x0600;
inline constexpr std::uint16_t kVersionBiff5 = 0x0500;
inline constexpr std::uint16_t kGlobalsSubstream = 0x0005;
inline constexpr std::uint16_t kWorksheetSubstream = 0x0010;
inline constexpr std::uint16_t kChartSubstream = 0x0020;
inline constexpr std::uint16_t kMacroSubstream = 0x0040;

}  // namespace korvex::biff
