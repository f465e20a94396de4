#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace varnel {

// The restore tool's command for an OS name, with the system directory;
// empty when the program knows no restore tool for that system.
std::wstring RestoreToolCommand(std::wstring_view osName, std::wstring_view systemDir);

// Starts the system's restore tool with file-system redirection off; false
// when the system is unknown and the caller must warn instead.
bool LaunchRestoreTool(const Platform& platform);

}  // namespace varnel
