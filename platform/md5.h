#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace varnel {

// RFC 1321 digest from the operating system's crypto library.
std::array<std::uint8_t, 16> Md5Digest(std::span<const std::uint8_t> bytes);

}  // namespace varnel
