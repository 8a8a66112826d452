#include "spreadsheet/xls/biff_decryption.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/ciphers.h"
#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/xls/biff_records.h"
#include "spreadsheet/xls/record_reader.h"
#include "workbook/spreadsheet.h"

namespace korvex {
namespace {

using Bytes = std::vector<std::byte>;

[[noreturn]] void RefuseOtherPassword() {
  Refuse("needs a password: it is an encrypted .xls workbook");
}
[[noreturn]] void RefuseMethod() {
  Refuse("is encrypted in a way that is not known");
}

// Records that are never encrypted: a program needs them before it has a password.
bool IsClearRecord(std::uint16_t number) {
  switch (number) {
    case biff::kBof:
    case biff::kFilePass:
    case biff::kInterfaceHdr:
    case biff::kRrdHead:
    case biff::kUsrExcl:
    case biff::kFileLock:
    case biff::kRrdInfo:
      return true;
    default:
      return false;
  }
}

// The encrypted bytes of one record.
struct Secret {
  std::span<std::byte> bytes;
  std::size_t offset;         // in the stream
  std::size_t record_length;  // of the record's data
};

// What the format's XOR method makes of the default password.
constexpr std::uint16_t kXorKey = 0xB359;
constexpr std::uint16_t kXorVerifier = 0x9A0A;
constexpr std::array<std::uint8_t, 16> kXorPad = {0x3C, 0x5B, 0xD4, 0x17, 0xF0, 0x1F, 0x28, 0x13,
                                                  0xF0, 0x4B, 0xB4, 0x03, 0xC4, 0x73, 0xA4, 0x20};

// Each byte was combined with a byte of the pad and then rotated by 5 bits. Place in the stream and
// length of the record choose the byte of the pad.
void ClearByXor(const Secret& secret) {
  std::size_t at = secret.offset + secret.record_length;
  for (std::byte& byte : secret.bytes) {
    byte = std::byte(std::rotl(LoadU8(&byte), 3) ^ kXorPad[at++ % kXorPad.size()]);
  }
}

void Append(Bytes& bytes, std::span<const std::byte> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes PasswordInUtf16() {
  Bytes password;
  for (const char letter : std::string_view(kDefaultPassword)) {
    password.push_back(std::byte(letter));
    password.push_back(std::byte{0});
  }
  return password;
}

// RC4 in blocks of 1,024 bytes. The key of a block is the digest of a seed and the block's number;
// both methods differ only in digest and seed.
class Rc4Stream {
 public:
  Rc4Stream(DigestKind digest, Bytes seed, std::size_t key_size)
      : digest_(digest), seed_(std::move(seed)), key_size_(key_size) {}

  // Whether a verifier and its digest, both encrypted, belong together.
  bool Verifies(std::span<const std::byte> verifier, std::span<const std::byte> digest) const {
    Bytes clear_verifier(verifier.begin(), verifier.end());
    Bytes clear_digest(digest.begin(), digest.end());
    ApplyRc4(BlockKey(0), {clear_verifier, clear_digest});
    return Digest(digest_, clear_verifier) == clear_digest;
  }

  void operator()(const Secret& secret) {
    std::size_t at = secret.offset;
    for (std::byte& byte : secret.bytes) {
      if (at / kBlockSize != block_) StartBlock(at / kBlockSize);
      byte ^= key_stream_[at++ % kBlockSize];
    }
  }

 private:
  static constexpr std::size_t kBlockSize = 1024;

  Bytes BlockKey(std::size_t block) const {
    Bytes input = seed_;
    for (int shift = 0; shift < 32; shift += 8) input.push_back(std::byte(block >> shift & 0xFF));
    Bytes key = Digest(digest_, input);
    key.resize(key_size_);
    if (key_size_ == 5) key.resize(16);  // 40 bits, filled up with zeros to 128
    return key;
  }

  void StartBlock(std::size_t block) {
    block_ = block;
    key_stream_.fill(std::byte{0});
    ApplyRc4(BlockKey(block), {key_stream_});
  }

  DigestKind digest_;
  Bytes seed_;
  std::size_t key_size_;
  std::size_t block_ = static_cast<std::size_t>(-1);
  std::array<std::byte, kBlockSize> key_stream_ = {};
};

// The first method: the seed is the MD5 of 16 times the first bytes of the password's MD5 and the
// salt.
Rc4Stream OpenRc4(std::span<const std::byte> data) {
  constexpr std::size_t kField = 16;
  constexpr std::size_t kSecretSize = 5;  // 40 bits, once the most that law allowed
  if (data.size() < 3 * kField) RefuseMethod();
  Bytes secret = Digest(DigestKind::kMd5, PasswordInUtf16());
  Bytes salted;
  for (int i = 0; i < 16; ++i) {
    Append(salted, std::span(secret).first(kSecretSize));
    Append(salted, data.first(kField));
  }
  secret = Digest(DigestKind::kMd5, salted);
  secret.resize(kSecretSize);
  Rc4Stream cipher(DigestKind::kMd5, std::move(secret), 16);
  if (!cipher.Verifies(data.subspan(kField, kField), data.subspan(2 * kField, kField))) {
    RefuseOtherPassword();
  }
  return cipher;
}

// The second method: the seed is the SHA-1 of salt and password.
Rc4Stream OpenCryptoApi(std::span<const std::byte> data) {
  constexpr std::uint32_t kRc4 = 0x6801;
  constexpr std::size_t kSaltSize = 16;
  constexpr std::size_t kDigestSize = 20;
  constexpr std::size_t kVerifierSize = 4 + kSaltSize + 16 + 4 + kDigestSize;
  if (data.size() < 8) RefuseMethod();
  const std::size_t header_size = LoadU32(data.data() + 4);
  data = data.subspan(8);
  if (header_size < 20 || header_size > data.size() || data.size() - header_size < kVerifierSize) {
    RefuseMethod();
  }
  const std::uint32_t stated_bits = LoadU32(data.data() + 16);
  // A key of 0 bits stands for the 40 of the provider's default.
  const std::uint32_t key_bits = stated_bits == 0 ? 40 : stated_bits;
  if (LoadU32(data.data() + 8) != kRc4 || key_bits < 40 || key_bits > 128) RefuseMethod();
  const std::span<const std::byte> verifier = data.subspan(header_size, kVerifierSize);
  Bytes salted;
  Append(salted, verifier.subspan(4, kSaltSize));
  Append(salted, PasswordInUtf16());
  Rc4Stream cipher(DigestKind::kSha1, Digest(DigestKind::kSha1, salted), key_bits / 8);
  if (!cipher.Verifies(verifier.subspan(4 + kSaltSize, 16), verifier.last(kDigestSize))) {
    RefuseOtherPassword();
  }
  return cipher;
}

// Calls `clear` with the encrypted bytes of every record from `offset` on. Of BOUNDSHEET the first
// four bytes, the sheet's offset, are not encrypted.
template <typename Cipher>
void ClearRecords(std::span<std::byte> stream, std::size_t offset, Cipher&& clear) {
  RecordReader records(stream, offset);
  while (records.Next()) {
    if (IsClearRecord(records.Number())) continue;
    const std::size_t length = records.Data().size();
    const std::size_t skipped =
        records.Number() == biff::kBoundSheet ? std::min<std::size_t>(length, 4) : 0;
    const auto at = static_cast<std::size_t>(records.Data().data() - stream.data()) + skipped;
    clear(Secret{stream.subspan(at, length - skipped), at, length});
  }
}

// The data of the FILEPASS record, null when there is none.
std::span<const std::byte> FindFilePass(std::span<const std::byte> stream) {
  RecordReader records(stream, 0);
  if (!records.Next()) return {};
  while (records.Next() && records.Number() != biff::kEof && records.Number() != biff::kBof) {
    if (records.Number() == biff::kFilePass) return records.Data();
  }
  return {};
}

void ClearBehind(std::span<const std::byte> file_pass, std::span<std::byte> stream) {
  const auto offset = static_cast<std::size_t>(file_pass.data() - stream.data()) + file_pass.size();
  const std::size_t size = file_pass.size();
  if (size < 4) RefuseMethod();
  const auto word = [file_pass](std::size_t at) { return LoadU16(file_pass.data() + at); };
  // XOR: two fields in BIFF5, and a zero in front of them in BIFF8.
  if (size < 6 || word(0) == 0) {
    const std::size_t key = size < 6 ? 0 : 2;
    if (word(key) != kXorKey || word(key + 2) != kXorVerifier) RefuseOtherPassword();
    return ClearRecords(stream, offset, ClearByXor);
  }
  const std::uint16_t version = word(2);
  if (word(0) != 1 || version < 1 || version > 4) RefuseMethod();
  const std::span<const std::byte> rest = file_pass.subspan(6);
  ClearRecords(stream, offset, version == 1 ? OpenRc4(rest) : OpenCryptoApi(rest));
}

}  // namespace

std::span<const std::byte> ClearStream(std::span<const std::byte> stream, Bytes& storage) {
  const std::span<const std::byte> file_pass = FindFilePass(stream);
  if (file_pass.data() == nullptr) return stream;
  const auto offset = static_cast<std::size_t>(file_pass.data() - stream.data());
  // The stream may be a part of the file, which is not to be changed.
  if (stream.data() != storage.data()) storage.assign(stream.begin(), stream.end());
  const std::span<std::byte> copy(storage.data(), stream.size());
  ClearBehind(copy.subspan(offset, file_pass.size()), copy);
  return copy;
}

}  // namespace korvex
