// Which records a worksheet of BIFF5 to BIFF8 holds, and how long they are.
//
// One wrong bit in a record's header sends a reader into the middle of other records, where it
// takes data for headers and passes over wells. These forms tell such a place from a sound one.
// They are wide enough for the files of all known writers: what is only unusual is read.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvex {

// Some writers leave a few spare bytes after the data of a record.
inline constexpr std::size_t kMostSurplus = 8;

// Some leave a few zeros between records, which read as records of number 0 without data. More of
// them in a row lie where other records were: what is wrong then about the last of them.
inline constexpr int kMostNullRecords = 8;
inline constexpr char kTooManyNulls[] = "is one of many that are nothing but zeros";

// Whether the data of a record is longer than its kind allows, spare bytes included. False for
// kinds of any length, and for unknown ones up to the most that a record can hold.
bool IsTooLong(std::uint16_t number, std::size_t length);

// Whether worksheets hold records of that number.
bool IsKnown(std::uint16_t number);

// Whether a header can be one of a worksheet: a known number, with a length that its kind can have.
bool IsSheetRecord(std::uint16_t number, std::size_t length);

// Whether a record that is no cell has its place between cells: ROW, DBCELL, and what comes with a
// formula.
bool BelongsBetweenCells(std::uint16_t number);

}  // namespace korvex
