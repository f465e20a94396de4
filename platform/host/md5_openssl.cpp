#include <openssl/evp.h>

#include "platform/md5.h"

namespace varnel {

std::array<std::uint8_t, 16> Md5Digest(std::span<const std::uint8_t> bytes) {
  std::array<std::uint8_t, 16> digest{};
  unsigned int length = 0;
  EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_md5(), nullptr);
  return digest;
}

}  // namespace varnel
