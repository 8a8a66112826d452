#include "platform/ciphers.h"

#include <gcrypt.h>

#include <string>

#include "platform/error.h"

namespace korvex {
namespace {

// A machine set up to allow only approved algorithms would otherwise abort the program at MD5 and
// RC4.
void PrepareLibrary() {
  [[maybe_unused]] static const bool is_prepared = [] {
    gcry_control(GCRYCTL_NO_FIPS_MODE, 0);
    gcry_check_version(nullptr);
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
}

int AlgorithmOf(DigestKind kind) {
  switch (kind) {
    case DigestKind::kMd5:
      return GCRY_MD_MD5;
    case DigestKind::kSha1:
      return GCRY_MD_SHA1;
    case DigestKind::kSha256:
      return GCRY_MD_SHA256;
  }
  return GCRY_MD_NONE;
}

void Check(gcry_error_t error) {
  if (error == 0) return;
  throw Error(error_number::kAutomation,
              std::string("cannot be decrypted: ") + gcry_strerror(error));
}

}  // namespace

std::vector<std::byte> Digest(DigestKind kind, std::span<const std::byte> bytes) {
  PrepareLibrary();
  const int algorithm = AlgorithmOf(kind);
  std::vector<std::byte> digest(gcry_md_get_algo_dlen(algorithm));
  gcry_md_hash_buffer(algorithm, digest.data(), bytes.data(), bytes.size());
  return digest;
}

void ApplyRc4(std::span<const std::byte> key, std::initializer_list<std::span<std::byte>> pieces) {
  PrepareLibrary();
  gcry_cipher_hd_t cipher = nullptr;
  Check(gcry_cipher_open(&cipher, GCRY_CIPHER_ARCFOUR, GCRY_CIPHER_MODE_STREAM, 0));
  gcry_error_t error = gcry_cipher_setkey(cipher, key.data(), key.size());
  for (const std::span<std::byte> piece : pieces) {
    if (error == 0) error = gcry_cipher_encrypt(cipher, piece.data(), piece.size(), nullptr, 0);
  }
  gcry_cipher_close(cipher);
  Check(error);
}

}  // namespace korvex
