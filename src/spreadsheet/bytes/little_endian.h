// Values of the workbook and compound file formats, which are little-endian on every machine. The
// caller has checked that the bytes are there.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace korvex {

inline std::uint8_t LoadU8(const std::byte* at) {
  return std::to_integer<std::uint8_t>(*at);
}

inline std::uint16_t LoadU16(const std::byte* at) {
  return static_cast<std::uint16_t>(LoadU8(at) | LoadU8(at + 1) << 8);
}

inline std::uint32_t LoadU32(const std::byte* at) {
  return LoadU16(at) | static_cast<std::uint32_t>(LoadU16(at + 2)) << 16;
}

inline std::uint64_t LoadU64(const std::byte* at) {
  return LoadU32(at) | static_cast<std::uint64_t>(LoadU32(at + 4)) << 32;
}

inline double LoadF64(const std::byte* at) {
  return std::bit_cast<double>(LoadU64(at));
}

}  // namespace korvex
