#include <windows.h>
#include <bcrypt.h>

#include "platform/md5.h"
#include "platform/win32/unique_handle.h"

namespace varnel {

namespace {

void CloseAlgorithm(BCRYPT_ALG_HANDLE algorithm) { BCryptCloseAlgorithmProvider(algorithm, 0); }
void CloseHash(BCRYPT_HASH_HANDLE hash) { BCryptDestroyHash(hash); }

using UniqueAlgorithm = win32::UniqueAny<BCRYPT_ALG_HANDLE, &CloseAlgorithm>;
using UniqueHash = win32::UniqueAny<BCRYPT_HASH_HANDLE, &CloseHash>;

}  // namespace

std::array<std::uint8_t, 16> Md5Digest(std::span<const std::uint8_t> bytes) {
  std::array<std::uint8_t, 16> digest{};
  UniqueAlgorithm algorithm;
  if (BCryptOpenAlgorithmProvider(algorithm.put(), BCRYPT_MD5_ALGORITHM, nullptr, 0) != 0)
    return digest;
  UniqueHash hash;
  if (BCryptCreateHash(algorithm.get(), hash.put(), nullptr, 0, nullptr, 0, 0) != 0) return digest;
  // BCrypt takes a non-const pointer but only reads the input.
  if (BCryptHashData(hash.get(), const_cast<PUCHAR>(bytes.data()),
                     static_cast<ULONG>(bytes.size()), 0) != 0)
    return digest;
  BCryptFinishHash(hash.get(), digest.data(), static_cast<ULONG>(digest.size()), 0);
  return digest;
}

}  // namespace varnel
