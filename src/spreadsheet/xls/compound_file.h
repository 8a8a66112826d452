// Layout of a compound file (OLE structured storage), the container of an .xls workbook.
//
// The file is a header of 512 bytes and sectors; sector n starts at (n + 1) << sector shift. All
// values are little-endian. The FAT holds for every sector the id of the next one of its chain. The
// ids of the FAT's own sectors stand in the header (109 of them) and in the chain of DIFAT sectors,
// whose last entry leads to the next DIFAT sector. Streams shorter than the cutoff lie in
// mini-sectors of 64 bytes inside the root entry's stream, chained by the mini-FAT.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvex::compound {

inline constexpr std::uint8_t kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

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

// Offsets in the header.
namespace header {
inline constexpr std::size_t kMinorVersion = 24;          // uint16, 0x003E
inline constexpr std::size_t kMajorVersion = 26;          // uint16, 3 or 4
inline constexpr std::size_t kByteOrder = 28;             // uint16, 0xFFFE
inline constexpr std::size_t kSectorShift = 30;           // uint16, 9 (version 3) or 12 (version 4)
inline constexpr std::size_t kMiniShift = 32;             // uint16, 6
inline constexpr std::size_t kDirectorySectorCount = 40;  // 0 in version 3
inline constexpr std::size_t kFatSectorCount = 44;
inline constexpr std::size_t kFirstDirectorySector = 48;
inline constexpr std::size_t kMiniCutoff = 56;
inline constexpr std::size_t kFirstMiniFatSector = 60;
inline constexpr std::size_t kMiniFatSectorCount = 64;
inline constexpr std::size_t kFirstDifatSector = 68;
inline constexpr std::size_t kDifatSectorCount = 72;
inline constexpr std::size_t kDifat = 76;
}  // namespace header

// Offsets in a directory entry.
namespace entry {
inline constexpr std::size_t kName = 0;         // UTF-16, 32 units with the closing zero
inline constexpr std::size_t kNameLength = 64;  // uint16, bytes with the closing zero
inline constexpr std::size_t kType = 66;        // uint8
inline constexpr std::size_t kColor = 67;       // uint8, 0 red, 1 black
inline constexpr std::size_t kLeft = 68;
inline constexpr std::size_t kRight = 72;
inline constexpr std::size_t kChild = 76;
inline constexpr std::size_t kClassId = 80;
inline constexpr std::size_t kFirstSector = 116;
inline constexpr std::size_t kSize = 120;  // uint64; the upper half is not reliable in version 3
}  // namespace entry

enum EntryType : std::uint8_t {
  kEmptyEntry = 0,
  kStorageEntry = 1,
  kStreamEntry = 2,
  kRootEntry = 5,
};

}  // namespace korvex::compound
