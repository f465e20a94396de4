#pragma once

#include <cstdint>
#include <string>

#include "platform/system.h"

namespace varnel {

// The most a program's size can be, 1024.00 GB, the display's largest step.
constexpr std::int64_t kLargestProgramSize = std::int64_t{1} << 40;
// `bytes` when a program can have that size, else 0: a negative or larger
// size comes from a broken entry and counts as unknown, as if none were given.
std::int64_t PlausibleSize(std::int64_t bytes);

// "1023 Byte", "1.50 KB", "12.00 MB", "1024.00 GB": two decimals with the
// given separator, no thousands separator, nothing above GB.
std::wstring FormatFileSize(std::int64_t bytes, wchar_t decimalSeparator);
// The same with the user's decimal separator.
std::wstring FormatFileSize(ISystem& system, std::int64_t bytes);

}  // namespace varnel
