// Decrypts workbook streams that are encrypted with the format's default password: writers use it
// for workbooks that are protected but not secret, and they open without a question.
//
// FILEPASS comes after the BOF of the stream; all records after it are encrypted.
//   XOR        0 uint16 key, 2 uint16 verifier; in BIFF8 a uint16 0 in front of both
//   RC4        0 uint16 1, 2 uint16 1, 4 uint16 1, 6 salt, 22 verifier, 38 MD5 of the verifier; 16
//              bytes each
//   CryptoAPI  0 uint16 1, 2 uint16 2 to 4, 4 uint16 2, 6 uint32 flags, 10 uint32 size of the
//              header, 14 header, verifier
//     header   0 uint32 flags, 4 uint32 0, 8 uint32 cipher, 12 uint32 digest, 16 uint32 bits of the
//              key, 20 uint32 kind of provider, 24 8 bytes 0, 32 UTF-16 name of the provider
//     verifier 0 uint32 16, 4 salt, 20 verifier (16 bytes each), 36 uint32 20, 40 SHA-1 of the
//              verifier
// Verifier and digest are encrypted like the start of a stream. Not encrypted are the headers of
// records, the records that a program needs before it has a password, and the offset in BOUNDSHEET.
// RC4 runs over the whole stream, these bytes included, with a new key every 1,024 bytes; XOR
// starts anew in every record.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace korvex {

// Returns `stream` itself when it is not encrypted, else the decrypted stream in `storage`, in
// which `stream` may already lie. Its FILEPASS record stays. Refuses a stream that needs another
// password, or is encrypted in a way that is not known.
std::span<const std::byte> ClearStream(std::span<const std::byte> stream,
                                       std::vector<std::byte>& storage);

}  // namespace korvex
