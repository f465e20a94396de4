#pragma once

#include <string_view>

#include "platform/platform.h"

namespace varnel {

// Starts a command line that may hold the program's own placeholders
// ("%WINDOWS%", "%SYSTEM%", "%APP%\" or "%APP%/", case-sensitive). A
// "rundll32.exe " command goes to RunDll32.exe with the rest as parameters.
// Whether the start succeeded is not examined.
void RunShellCommand(const Platform& platform, std::wstring_view command);

}  // namespace varnel
