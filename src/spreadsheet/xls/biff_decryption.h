// Clears workbook streams that are encrypted with the format's default password, which a writer
// takes when a workbook is to be protected but not secret.
//
// FILEPASS stands behind the BOF of the stream; all records behind it are encrypted:
//   XOR          uint16 key, uint16 verifier; BIFF8 has a uint16 0 in front
//   RC4          uint16 1, uint16 1, uint16 1, 16 bytes each: salt, verifier, MD5 of the verifier
//   CryptoAPI    uint16 1, uint16 2 to 4, uint16 2, uint32 flags, uint32 size of the header,
//   header:
//                uint32 flags, uint32 0, uint32 cipher, uint32 digest, uint32 bits of the key,
//                uint32 kind of provider, 8 bytes 0, UTF-16 name of the provider; behind the header
//                uint32 16, 16 bytes each of salt and verifier, uint32 20, SHA-1 of the verifier
// Verifier and digest are encrypted as the start of a stream would be. Record headers, the records
// that a program needs before it has a password, and the offset in BOUNDSHEET stay clear. RC4 runs
// over the whole stream, clear bytes included, with a new key every 1,024 bytes; XOR starts anew in
// every record.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace korvex {

// `stream` itself when it is not encrypted, else the clear stream in `storage`, in which `stream`
// may lie. Its FILEPASS record stays. Error 1004 (a predicate) when it needs another password.
std::span<const std::byte> ClearStream(std::span<const std::byte> stream,
                                       std::vector<std::byte>& storage);

}  // namespace korvex
