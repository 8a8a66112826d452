// The cipher and the digests that workbooks were encrypted with. They protect nothing any more:
// here they open old files.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <vector>

namespace korvex {

enum class DigestKind { kMd5, kSha1 };

// 16 bytes of MD5, 20 of SHA-1.
std::vector<std::byte> Digest(DigestKind kind, std::span<const std::byte> bytes);

// Encrypts or decrypts `pieces` by RC4, one behind the other with one key stream. A key has 5 to 16
// bytes.
void ApplyRc4(std::span<const std::byte> key, std::initializer_list<std::span<std::byte>> pieces);

}  // namespace korvex
