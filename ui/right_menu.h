#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace varnel {

// The first argument "/rightmenu", in any case.
bool IsRightMenuCall(const std::vector<std::wstring>& args);

// Serves "/rightmenu FILE" at start-up: the name becomes the hand-over
// file's first line, the file of that name is deleted (or queued for
// deletion at restart), and when it still exists it is returned for the
// forced-uninstall window. The hand-over file itself stays unless it named
// itself or was empty.
std::optional<std::wstring> ServeRightMenu(const Platform& platform,
                                           const std::vector<std::wstring>& args);

// A ".lnk" or ".ink" shortcut stands for its target; the file the
// forced-uninstall window opens for `file`, when it exists.
std::optional<std::wstring> ForcedUninstallTarget(const Platform& platform, std::wstring file);

}  // namespace varnel
