#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace varnel {

namespace RebootMode {
constexpr int Delete = 1;
constexpr int Rename = 2;
}  // namespace RebootMode

// Deletes (mode 1) or renames fileName to newName (mode 2) at the next start
// of Windows. Never throws: the one failure that carries a message on the old
// platform, "Invalid File!", comes back through `error` (when given) together
// with false; every other failure only through the result.
bool ScheduleFileOnReboot(const Platform& platform, std::wstring_view fileName,
                          std::wstring_view newName, int mode, std::wstring* error = nullptr);

// At most 8 characters before the first dot and at most 3 after it, or at
// most 8 without a dot.
bool IsShortFileName(std::wstring_view name);

}  // namespace varnel
