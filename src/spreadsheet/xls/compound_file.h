// Layout of a compound file (OLE structured storage), the container of an .xls workbook.
//
// The file is a header of 512 bytes and then sectors; sector n starts at (n + 1) << sector shift.
// All values are little-endian.
//
//   FAT     for every sector the id of the next one of its chain
//   DIFAT   the ids of the FAT's own sectors: 109 in the header, more in a chain of DIFAT sectors,
//           whose last entry is the id of the next DIFAT sector
//   directory  a chain of entries, the root storage first; each storage has its children as a tree
//   mini-stream  the stream of the root entry: streams shorter than the cutoff lie in it, in
//           mini-sectors of 64 bytes that the mini-FAT chains
//
// Header:
//    0  8 bytes  signature                 44  uint32  sectors of the FAT
//    8  16 bytes class, zeros              48  uint32  first sector of the directory
//   24  uint16   minor version, 0x003E     52  uint32  0
//   26  uint16   major version, 3 or 4     56  uint32  cutoff of the mini-stream, 4096
//   28  uint16   byte order, 0xFFFE        60  uint32  first sector of the mini-FAT
//   30  uint16   sector shift, 9 or 12     64  uint32  sectors of the mini-FAT
//   32  uint16   mini-sector shift, 6      68  uint32  first sector of the DIFAT
//   34  6 bytes  zeros                     72  uint32  sectors of the DIFAT
//   40  uint32   sectors of the directory, 76  uint32  109 entries of the DIFAT
//                0 in version 3
// Entry of the directory, 128 bytes:
//    0  UTF-16   name with a closing zero, 32 units
//   64  uint16   bytes of the name, the zero included
//   66  uint8    type (EntryType)          67  uint8   colour in the tree, 0 red, 1 black
//   68  uint32   left sibling              72  uint32  right sibling
//   76  uint32   a child                   80  16 bytes class
//   96  uint32   state                    100  2 x 8 bytes times
//  116  uint32   first sector            120  uint64  size; in version 3 only the lower half counts
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korvex::compound {

inline constexpr std::string_view kSignature = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

inline constexpr std::size_t kHeaderSize = 512;
inline constexpr std::size_t kHeaderDifatEntries = 109;
inline constexpr std::size_t kDirectoryEntrySize = 128;
inline constexpr std::uint32_t kMiniStreamCutoff = 4096;

// Sector ids with a meaning of their own.
inline constexpr std::uint32_t kDifatSector = 0xFFFFFFFC;
inline constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
inline constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
inline constexpr std::uint32_t kFreeSector = 0xFFFFFFFF;
inline constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

// Offsets in the header that the reader needs.
namespace header {
inline constexpr std::size_t kSectorShift = 30;
inline constexpr std::size_t kFatSectorCount = 44;
inline constexpr std::size_t kFirstDirectorySector = 48;
inline constexpr std::size_t kFirstMiniFatSector = 60;
inline constexpr std::size_t kFirstDifatSector = 68;
inline constexpr std::size_t kDifatSectorCount = 72;
inline constexpr std::size_t kDifat = 76;
}  // namespace header

// The same in a directory entry.
namespace entry {
inline constexpr std::size_t kName = 0;
inline constexpr std::size_t kType = 66;
inline constexpr std::size_t kLeft = 68;
inline constexpr std::size_t kRight = 72;
inline constexpr std::size_t kChild = 76;
inline constexpr std::size_t kFirstSector = 116;
inline constexpr std::size_t kSize = 120;
}  // namespace entry

enum EntryType : std::uint8_t {
  kEmptyEntry = 0,
  kStorageEntry = 1,
  kStreamEntry = 2,
  kRootEntry = 5,
};

}  // namespace korvex::compound
