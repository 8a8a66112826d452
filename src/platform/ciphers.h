// The cipher and the digests that old workbooks are encrypted with. They protect nothing any more;
// here they only open files. The platform's own library does the work: libgcrypt on Linux,
// CryptoAPI on Windows.
//
// All throw Error 1004 whose description is a predicate without the file's name ("cannot be
// decrypted: …") when the library refuses. They may be called from any thread.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <vector>

namespace korvex {

enum class DigestKind { kMd5, kSha1 };

// 16 bytes of MD5, 20 of SHA-1.
std::vector<std::byte> Digest(DigestKind kind, std::span<const std::byte> bytes);

// Encrypts or decrypts `pieces` in place by RC4, one after the other with one key stream. A key has
// 5 to 16 bytes.
void ApplyRc4(std::span<const std::byte> key, std::initializer_list<std::span<std::byte>> pieces);

}  // namespace korvex
