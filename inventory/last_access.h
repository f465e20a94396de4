#pragma once

#include <string_view>

#include "base/date_time.h"
#include "platform/platform.h"

namespace varnel {

// Whether the file system keeps last-access times: "NtfsDisableLastAccessUpdate"
// is a DWORD of exactly 0. Missing, of another type or any other number: off.
bool LastAccessTracking(const Platform& platform);

// Local last-access time of `file` when tracking is on; now when it is off,
// when the file is missing or unreadable, or when its time converts to 0.
TDateTime FileLastAccessDate(const Platform& platform, std::wstring_view file, bool tracking);

}  // namespace varnel
