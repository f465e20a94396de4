#pragma once

#include <cstdint>
#include <string>

#include "platform/system.h"

namespace varnel {

// "1023 Byte", "1.50 KB", "12.00 MB", "1024.00 GB": two decimals with the
// given separator, no thousands separator, nothing above GB.
std::wstring FormatFileSize(std::int64_t bytes, wchar_t decimalSeparator);
// The same with the user's decimal separator.
std::wstring FormatFileSize(ISystem& system, std::int64_t bytes);

}  // namespace varnel
