#pragma once

#include <string>

#include "core/app_frame.h"

namespace varnel {

// The program's per-user data folder: the user's roaming application data,
// then "Varnel", then "Varnel Uninstaller"; no trailing "\". With `create`,
// each missing level is made. Empty when there is no application-data folder.
std::wstring UserDataFolder(const TAppFrame& frame, bool create);

// UserDataFolder + "\SoftwareCache.ini".
std::wstring SoftwareCacheFileName(const TAppFrame& frame, bool createFolder);

}  // namespace varnel
