#include "platform/ciphers.h"

#include "platform/windows/windows_api.h"
// After the Windows headers, which it needs.
#include <wincrypt.h>

#include <algorithm>
#include <array>
#include <string>

#include "platform/error.h"
#include "platform/windows/windows_error.h"

namespace korvex {
namespace {

void Check(BOOL is_done) {
  if (is_done) return;
  throw Error(error_number::kAutomation, "cannot be decrypted: " + SystemText(GetLastError()));
}

// One handle of CryptoAPI, closed at the end of its scope.
template <typename Handle, auto close>
class CryptoHandle {
 public:
  CryptoHandle() = default;
  CryptoHandle(const CryptoHandle&) = delete;
  CryptoHandle& operator=(const CryptoHandle&) = delete;
  ~CryptoHandle() {
    if (handle_ != 0) close(handle_);
  }
  Handle Get() const { return handle_; }
  Handle* Out() { return &handle_; }

 private:
  Handle handle_ = 0;
};

void Release(HCRYPTPROV provider) {
  CryptReleaseContext(provider, 0);
}
using Provider = CryptoHandle<HCRYPTPROV, Release>;
using Hash = CryptoHandle<HCRYPTHASH, CryptDestroyHash>;
using Key = CryptoHandle<HCRYPTKEY, CryptDestroyKey>;

// Opened once: an encrypted workbook asks for a digest and a key stream per kilobyte. Threads may
// share it, but neither hashes nor keys.
HCRYPTPROV SharedProvider() {
  static const struct Opened {
    Opened() {
      // The older providers know no SHA-256.
      Check(CryptAcquireContextW(provider.Out(), nullptr, MS_ENH_RSA_AES_PROV_W, PROV_RSA_AES,
                                 CRYPT_VERIFYCONTEXT | CRYPT_SILENT));
    }
    Provider provider;
  } opened;
  return opened.provider.Get();
}

}  // namespace

std::vector<std::byte> Digest(DigestKind kind, std::span<const std::byte> bytes) {
  constexpr struct {
    ALG_ID algorithm;
    DWORD size;
  } kKinds[] = {{CALG_MD5, 16}, {CALG_SHA1, 20}, {CALG_SHA_256, 32}};
  auto [algorithm, size] = kKinds[static_cast<int>(kind)];
  Hash hash;
  Check(CryptCreateHash(SharedProvider(), algorithm, 0, 0, hash.Out()));
  while (!bytes.empty()) {
    // One call takes fewer than 4 GiB.
    const auto piece = bytes.first(std::min<std::size_t>(bytes.size(), std::size_t{1} << 30));
    Check(CryptHashData(hash.Get(), reinterpret_cast<const BYTE*>(piece.data()),
                        static_cast<DWORD>(piece.size()), 0));
    bytes = bytes.subspan(piece.size());
  }
  std::vector<std::byte> digest(size);
  Check(
      CryptGetHashParam(hash.Get(), HP_HASHVAL, reinterpret_cast<BYTE*>(digest.data()), &size, 0));
  return digest;
}

void ApplyRc4(std::span<const std::byte> key, std::initializer_list<std::span<std::byte>> pieces) {
  // A key that is imported as it stands, without a key of the provider's around it.
  struct PlainKey {
    BLOBHEADER header = {PLAINTEXTKEYBLOB, CUR_BLOB_VERSION, 0, CALG_RC4};
    DWORD size = 0;
    std::array<std::byte, 16> bytes = {};
  } plain;
  plain.size = static_cast<DWORD>(std::min(key.size(), plain.bytes.size()));
  std::copy_n(key.begin(), plain.size, plain.bytes.begin());

  Key cipher;
  Check(CryptImportKey(SharedProvider(), reinterpret_cast<const BYTE*>(&plain),
                       static_cast<DWORD>(offsetof(PlainKey, bytes)) + plain.size, 0, CRYPT_NO_SALT,
                       cipher.Out()));
  for (const std::span<std::byte> piece : pieces) {
    auto size = static_cast<DWORD>(piece.size());
    if (size == 0) continue;
    // Not "final": that would start the key stream anew for the next piece.
    Check(CryptEncrypt(cipher.Get(), 0, FALSE, 0, reinterpret_cast<BYTE*>(piece.data()), &size,
                       size));
  }
}

}  // namespace korvex
