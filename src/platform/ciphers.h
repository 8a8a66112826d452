// Digests of files, and the cipher and the digests that old workbooks are encrypted with; those
// protect nothing any more and only open files here. The platform's own library does the work:
// libgcrypt on Linux, CryptoAPI on Windows.
//
// All throw Error 1004 whose description is a predicate without the file's name ("cannot be
// decrypted: …") when the library refuses. They may be called from any thread.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace korvex {

enum class DigestKind { kMd5, kSha1, kSha256 };

// 16 bytes of MD5, 20 of SHA-1, 32 of SHA-256.
std::vector<std::byte> Digest(DigestKind kind, std::span<const std::byte> bytes);

// Encrypts or decrypts `pieces` in place by RC4, one after the other with one key stream. A key has
// 5 to 16 bytes.
void ApplyRc4(std::span<const std::byte> key, std::initializer_list<std::span<std::byte>> pieces);

// The SHA-256 by which anybody can tell later whether a file is still the same: 64 lower-case
// hexadecimal digits. Takes memory for the whole file. Throws what reading it throws, too.
inline std::string Sha256OfFile(const FileSystem& files, const std::string& path) {
  std::vector<std::byte> content;
  files.ReadFile(path, content);
  std::string digits;
  for (const std::byte byte : Digest(DigestKind::kSha256, content)) {
    constexpr char kDigits[] = "0123456789abcdef";
    digits += kDigits[std::to_integer<int>(byte >> 4)];
    digits += kDigits[std::to_integer<int>(byte & std::byte{15})];
  }
  return digits;
}

}  // namespace korvex
